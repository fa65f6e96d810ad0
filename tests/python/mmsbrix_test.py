"""The Python module, against a relay and by itself."""

import ctypes
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest
from datetime import datetime, timedelta, timezone

import mmsbrix
from mmsbrix._library import lib

RELAY = os.environ["MMSBRIX_TEST_RELAY"]
MEDIA = pathlib.Path(os.environ["MMSBRIX_TEST_MEDIA"])
URL = "http://mmsc.example/mms"


class Messages(unittest.TestCase):
    def test_reads_back_what_was_composed(self):
        date = datetime(2026, 11, 21, 12, 30, 5, tzinfo=timezone.utc)
        message = mmsbrix.Message(
            to=["+358 40 123 4567"],
            cc=["ann@example.com"],
            sender="+358401111111",
            subject="Grüße",
            priority="high",
            date=date,
            expiry=date + timedelta(days=2),
            read_reply=True,
            text="Hei 😀",
        ).attach(MEDIA / "photo.jpg")
        read = mmsbrix.loads(message.encode())
        self.assertEqual(read.to, ["+358401234567"])
        self.assertEqual((read.cc, read.bcc), (["ann@example.com"], []))
        self.assertEqual((read.sender, read.subject), ("+358401111111", "Grüße"))
        self.assertEqual((read.date, read.expiry), (date, date + timedelta(days=2)))
        self.assertTrue(read.read_reply)
        text, picture = read.parts
        self.assertEqual((text.type, text.text, text.charset), ("text/plain", "Hei 😀", "utf-8"))
        self.assertEqual((picture.type, picture.name), ("image/jpeg", "photo.jpg"))
        self.assertEqual(picture.data, (MEDIA / "photo.jpg").read_bytes())
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "m.mms")
            read.save(path)
            self.assertEqual(mmsbrix.load(path).parts, read.parts)
            saved = read.extract(folder)
            self.assertEqual(pathlib.Path(saved[1]).read_bytes(), picture.data)

    def test_slides_become_a_presentation(self):
        message = mmsbrix.Message(to=["+1"], expiry=timedelta(hours=1))
        message.show([mmsbrix.Slide("Look", MEDIA / "photo.jpg", seconds=3), mmsbrix.Slide("Bye")])
        self.assertEqual(message.expiry, timedelta(hours=1))
        self.assertEqual(message.parts[0].type, "application/smil")
        self.assertIn('dur="3000ms"', message.parts[0].text)

    def test_says_what_is_wrong(self):
        for wrong in (
            lambda: mmsbrix.Message(to=["who?"]),
            lambda: mmsbrix.Message(to=["+1"]).encode(),
            lambda: mmsbrix.loads(b"hello"),
            lambda: mmsbrix.Notification.loads(b"\x8c\x84"),
        ):
            with self.assertRaises(mmsbrix.MmsError) as caught:
                wrong()
            self.assertTrue(str(caught.exception))
        with self.assertRaises(TypeError):
            mmsbrix.Message(to="+1")
        with self.assertRaises(FileNotFoundError):
            mmsbrix.load("/none")

    def test_inspects_any_octets(self):
        pdu = mmsbrix.Message(to=["+1"], text="x").encode()
        whole, cut = mmsbrix.inspect(pdu), mmsbrix.inspect(pdu[:-1])
        self.assertEqual((whole.type, whole.fields[0].value, whole.remarks), (0x80, "m-send-req", []))
        self.assertEqual(len(cut.remarks), 1)


class Conversation(unittest.TestCase):
    def test_goes_there_and_its_answers_back(self):
        told = []
        message = mmsbrix.Message(
            to=["+358402222222", "+358403333333"], sender="+358401111111", subject="Hi", text="Hello"
        )
        result = message.send(URL, proxy=RELAY, progress=lambda *a: told.append(a), headers={"X-A": "b"})
        self.assertEqual(str(result), "response status 0x80")
        self.assertEqual(told[-1], (len(message.encode()), len(message.encode())))

        waiting = max(pathlib.Path("waiting").iterdir(), key=lambda path: path.stat().st_mtime_ns)
        notification = mmsbrix.Notification.loads(waiting.read_bytes())
        with mmsbrix.Relay(notification.url, proxy=RELAY) as relay:
            got = relay.fetch()
            octets, size = ctypes.c_void_p(), ctypes.c_size_t()
            lib.mmsbrix_transport_fetched(relay._handle, ctypes.byref(octets), ctypes.byref(size))
            as_it_came = mmsbrix.loads(ctypes.string_at(octets.value, size.value))
            self.assertEqual((as_it_came.type, as_it_came.parts), (0x84, got.parts))
            self.assertEqual(relay.result, mmsbrix.Result("retrieve status", 0x80))
            self.assertEqual(relay.answer(notification).code, 200)
            self.assertEqual(relay.acknowledge(got.transaction_id).code, 200)
            self.assertEqual(relay.report_read(got).code, 200)
        self.assertEqual((got.type, got.parts), (0x84, message.parts))
        reply = got.reply(own="040 222 2222", text="Hi!")
        self.assertEqual((reply.to, reply.subject), (["+358401111111", "+358403333333"], "Re: Hi"))

    def test_goes_through_a_gateway(self):
        log = ""
        while "wap://" not in log:
            log = pathlib.Path("relay.log").read_text()
        gateway = log.partition("wap://")[2].split()[0]
        message = mmsbrix.Message(to=["+1"], text="x").attach(MEDIA / "photo.jpg")
        with mmsbrix.Relay(URL, wap=gateway) as relay:
            self.assertEqual(str(relay.send(message)), "response status 0x80")
            with self.assertRaises(mmsbrix.MmsError):
                relay.fetch()
        with self.assertRaises(mmsbrix.RelayError) as caught:
            message.send(URL, wap="127.0.0.1:9", timeout=0.5)
        self.assertEqual((caught.exception.result.kind, caught.exception.result.code), ("error", 12002))
        for wrong in ({"wap": gateway, "proxy": RELAY}, {"wap": ":1"}, {"proxy": "[::1]:x"}, {"timeout": 0}):
            with self.assertRaises(ValueError):
                mmsbrix.Relay(URL, **wrong)

    def test_failures_are_exceptions_with_their_result(self):
        with self.assertRaises(mmsbrix.RelayError) as caught:
            mmsbrix.fetch("http://mmsc.example/message/none", proxy=RELAY)
        self.assertEqual((caught.exception.result.kind, caught.exception.result.code), ("HTTP status", 404))
        message = mmsbrix.Message(to=["+1"], text="x")
        with self.assertRaises(mmsbrix.RelayError) as caught:
            message.send(URL, proxy=RELAY, progress=lambda done, total: False)
        self.assertEqual(caught.exception.result.code, 12017)
        with self.assertRaises(ZeroDivisionError):
            message.send(URL, proxy=RELAY, progress=lambda done, total: bool(1 // 0))
        with self.assertRaises(mmsbrix.MmsError):
            message.send(URL, headers={"Host": "x"})

    def test_the_example_runs(self):
        script = MEDIA.parent / "compose_and_send.py"
        command = [sys.executable, script, "+1", MEDIA / "photo.jpg", URL, RELAY]
        output = subprocess.run(command, capture_output=True, text=True, check=True).stdout
        self.assertEqual(output, "sent: response status 0x80\n")


if __name__ == "__main__":
    unittest.main()

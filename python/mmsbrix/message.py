"""Messages and their parts."""

from __future__ import annotations


import os
from collections.abc import Iterable
from ctypes import byref, c_int32, c_int64, c_size_t, c_uint32, c_void_p
from dataclasses import dataclass
from datetime import datetime, timedelta, timezone
from typing import TYPE_CHECKING, Any

from . import _library
from ._library import NOT_PRESENT, OK, lib, octets_at, status_text

if TYPE_CHECKING:
    from .relay import Progress, Result

_BY_TEXT = 100
_RECIPIENTS = {"to": 0x17, "cc": 0x02, "bcc": 0x01}
_CLASSES = {"personal": 0x80, "advertisement": 0x81, "informational": 0x82, "auto": 0x83}
_PRIORITIES = {"low": 0x80, "normal": 0x81, "high": 0x82}
_TYPE, _CLASS, _PRIORITY, _DATE, _EXPIRY, _DELIVERY = 0x0C, 0x0A, 0x0F, 0x05, 0x08, 0x07
_DELIVERY_REPORT, _READ_REPLY, _VISIBILITY = 0x06, 0x10, 0x14
_AFTER = 0x100  # added to the number of a time that is an interval
_SUBJECT, _FROM, _VERSION, _TRANSACTION, _MESSAGE_ID = 0x16, 0x09, 0x0D, 0x18, 0x0B


class MmsError(Exception):
    """Something cannot be done, and the text says why."""


def check(status: int, what: str = "") -> None:
    """Raises for any status but OK."""
    if status == OK:
        return
    text = status_text(status)
    raise MmsError(f"{what}: {text}" if what else text)


def encoded(text: str) -> tuple[bytes, int]:
    """A text as a pointer and a length."""
    octets = text.encode()
    return octets, len(octets)


def take(address: c_void_p, size: c_size_t) -> bytes:
    """Octets that the library handed over."""
    try:
        return octets_at(address.value, size.value)
    finally:
        lib.mmsbrix_free(address)


@dataclass(frozen=True)
class Part:
    """A body part."""

    type: str
    """Media type, such as ``image/jpeg``."""
    data: bytes
    name: str | None = None
    id: str | None = None
    """Content-ID without angle brackets."""
    charset: str | None = None

    @property
    def text(self) -> str:
        """The content as a text; octets that are not valid in its charset become U+FFFD."""
        try:
            return self.data.decode(self.charset or "utf-8", errors="replace")
        except LookupError:
            return self.data.decode("utf-8", errors="replace")


@dataclass(frozen=True)
class Slide:
    """What is shown at the same time."""

    text: str | None = None
    image: str | os.PathLike[str] | None = None
    audio: str | os.PathLike[str] | None = None
    seconds: float = 5.0


class Message:
    """A multimedia message.

    ``expiry`` and ``delivery_time`` are instants or intervals; a telephone number, mail address or
    IP address is told by its text.
    """

    def __init__(
        self,
        to: Iterable[str] = (),
        *,
        cc: Iterable[str] = (),
        bcc: Iterable[str] = (),
        sender: str | None = None,
        subject: str | None = None,
        text: str | None = None,
        priority: str | None = None,
        message_class: str | None = None,
        date: datetime | None = None,
        expiry: datetime | timedelta | None = None,
        delivery_time: datetime | timedelta | None = None,
        delivery_report: bool | None = None,
        read_reply: bool | None = None,
        show_sender: bool | None = None,
    ) -> None:
        self._adopt(lib.mmsbrix_message_new())
        for name, addresses in (("to", to), ("cc", cc), ("bcc", bcc)):
            if isinstance(addresses, str):
                raise TypeError(f"{name} is a list of addresses")
            for address in addresses:
                self._add_recipient(name, address)
        if sender is not None:
            self._set_text(_FROM, sender, "sender")
        if subject is not None:
            self._set_text(_SUBJECT, subject, "subject")
        if priority is not None:
            self._set_number(_PRIORITY, _PRIORITIES[priority], "priority")
        if message_class is not None:
            self._set_number(_CLASS, _CLASSES[message_class], "message_class")
        for field, flag in (
            (_DELIVERY_REPORT, delivery_report),
            (_READ_REPLY, read_reply),
            (_VISIBILITY, show_sender),
        ):
            if flag is not None:
                self._set_number(field, int(flag))
        if date is not None:
            self._set_number(_DATE, int(date.timestamp()), "date")
        for field, when in ((_EXPIRY, expiry), (_DELIVERY, delivery_time)):
            if isinstance(when, timedelta):
                self._set_number(field + _AFTER, int(when.total_seconds()), "interval")
            elif when is not None:
                self._set_number(field, int(when.timestamp()), "time")
        if text is not None:
            self.attach_text(text)

    def _adopt(self, handle: int | None) -> None:
        if not handle:
            raise MemoryError
        self._handle = handle

    @classmethod
    def _of(cls, handle: int | None) -> Message:
        message = cls.__new__(cls)
        message._adopt(handle)
        return message

    def __del__(self) -> None:
        handle = getattr(self, "_handle", None)
        if handle:
            lib.mmsbrix_message_free(handle)

    def __repr__(self) -> str:
        return f"<Message to={self.to} subject={self.subject!r} parts={len(self)}>"

    def __len__(self) -> int:
        """The number of parts."""
        return int(lib.mmsbrix_message_part_count(self._handle))

    # ---- fields

    def _add_recipient(self, name: str, address: str) -> None:
        check(
            lib.mmsbrix_message_add_recipient(
                self._handle, _RECIPIENTS[name], *encoded(address), _BY_TEXT
            ),
            f"{name}: {address!r}",
        )

    def _set_text(self, field: int, text: str, what: str) -> None:
        check(
            lib.mmsbrix_message_set_text(self._handle, field, *encoded(text)),
            f"{what}: {text!r}",
        )

    def _set_number(self, field: int, value: int, what: str = "") -> None:
        check(lib.mmsbrix_message_set_number(self._handle, field, value), what)

    def _text(self, function: Any, *arguments: int) -> str | None:
        text, length = c_void_p(), c_size_t()
        status = function(self._handle, *arguments, byref(text), byref(length))
        if status == NOT_PRESENT:
            return None
        check(status)
        return octets_at(text.value, length.value).decode(errors="replace")

    def _number(self, field: int) -> int | None:
        value = c_int64()
        status = lib.mmsbrix_message_number(self._handle, field, byref(value))
        if status == NOT_PRESENT:
            return None
        check(status)
        return value.value

    def _addresses(self, name: str) -> list[str]:
        which = _RECIPIENTS[name]
        count = lib.mmsbrix_message_recipient_count(self._handle, which)
        kind = c_int32()
        found = []
        for index in range(count):
            text, length = c_void_p(), c_size_t()
            check(
                lib.mmsbrix_message_recipient(
                    self._handle, which, index, byref(text), byref(length), byref(kind)
                )
            )
            found.append(octets_at(text.value, length.value).decode(errors="replace"))
        return found

    def _when(self, field: int) -> datetime | timedelta | None:
        seconds = self._number(field)
        if seconds is not None:
            return datetime.fromtimestamp(seconds, timezone.utc)
        seconds = self._number(field + _AFTER)
        return None if seconds is None else timedelta(seconds=seconds)

    @property
    def to(self) -> list[str]:
        """Addresses of the recipients."""
        return self._addresses("to")

    @property
    def cc(self) -> list[str]:
        """Addresses of those who get a copy."""
        return self._addresses("cc")

    @property
    def bcc(self) -> list[str]:
        """Addresses of those who get a copy that the others do not know of."""
        return self._addresses("bcc")

    @property
    def sender(self) -> str | None:
        """Address of the sender; None when it is left to the relay."""
        return self._text(lib.mmsbrix_message_text, _FROM)

    @property
    def subject(self) -> str | None:
        """The subject; None when there is none."""
        return self._text(lib.mmsbrix_message_text, _SUBJECT)

    @property
    def transaction_id(self) -> str | None:
        """By which a confirmation finds its request."""
        return self._text(lib.mmsbrix_message_text, _TRANSACTION)

    @property
    def message_id(self) -> str | None:
        """The relay's name of the message."""
        return self._text(lib.mmsbrix_message_text, _MESSAGE_ID)

    @property
    def version(self) -> str | None:
        """MMS version, such as ``1.2``."""
        return self._text(lib.mmsbrix_message_text, _VERSION)

    @property
    def type(self) -> int:
        """The standard's octet of the message type: 0x80 m-send-req, 0x84 m-retrieve-conf."""
        return self._number(_TYPE) or 0

    @property
    def date(self) -> datetime | None:
        """When it was sent, in UTC."""
        when = self._when(_DATE)
        return when if isinstance(when, datetime) else None

    @property
    def expiry(self) -> datetime | timedelta | None:
        """When the relay may forget it; an interval does not come back from octets."""
        return self._when(_EXPIRY)

    @property
    def read_reply(self) -> bool | None:
        """Whether the sender wants to know that it was read."""
        number = self._number(_READ_REPLY)
        return None if number is None else bool(number)

    # ---- parts

    def attach(
        self,
        content: str | os.PathLike[str] | bytes,
        *,
        type: str | None = None,
        name: str | None = None,
    ) -> Message:
        """Adds a part: a file by its path, or octets.  Returns the message."""
        if not isinstance(content, bytes):
            path = os.fspath(content)
            name = name or os.path.basename(path)
            with open(path, "rb") as file:
                content = file.read()
        check(
            lib.mmsbrix_message_attach(
                self._handle,
                content,
                len(content),
                *encoded(type or ""),
                *encoded(name or ""),
            )
        )
        return self

    def attach_text(self, text: str, *, name: str = "text.txt") -> Message:
        """Adds a part of plain text.  Returns the message."""
        return self.attach(text.encode(), type="text/plain", name=name)

    def show(self, slides: Iterable[Slide]) -> Message:
        """Makes slides the body; parts that it had are dropped.  Returns the message."""
        records = [
            _library.Slide(
                None if slide.text is None else slide.text.encode(),
                None if slide.image is None else os.fsencode(slide.image),
                None if slide.audio is None else os.fsencode(slide.audio),
                round(slide.seconds * 1000),
            )
            for slide in slides
        ]
        array = (_library.Slide * len(records))(*records)
        check(lib.mmsbrix_message_set_slides(self._handle, array, len(records)), "slides")
        return self

    @property
    def parts(self) -> list[Part]:
        """The parts, with copies of their octets."""
        found = []
        for index in range(len(self)):
            data, size = c_void_p(), c_size_t()
            status = lib.mmsbrix_message_part_data(
                self._handle, index, byref(data), byref(size)
            )
            if status != NOT_PRESENT:
                check(status)
            texts = [
                self._text(lib.mmsbrix_message_part_text, index, which)
                for which in (1, 2, 3, 4)
            ]
            found.append(
                Part(texts[0] or "", octets_at(data.value, size.value), *texts[1:])
            )
        return found

    def extract(self, folder: str | os.PathLike[str]) -> list[str]:
        """Saves every part as a new file of a folder that exists; their paths."""
        files = c_void_p()
        name = os.fsencode(folder)
        check(
            lib.mmsbrix_message_extract(self._handle, name, len(name), byref(files)),
            os.fspath(folder),
        )
        try:
            paths = []
            for index in range(lib.mmsbrix_files_count(files)):
                path, length, error = c_void_p(), c_size_t(), c_uint32()
                check(
                    lib.mmsbrix_files_get(
                        files, index, byref(path), byref(length), None, None, None, byref(error)
                    )
                )
                if error.value:
                    raise MmsError(f"part {index + 1} cannot be saved: error {error.value}")
                if length.value:
                    paths.append(os.fsdecode(octets_at(path.value, length.value)))
            return paths
        finally:
            lib.mmsbrix_files_free(files)

    # ---- octets

    def encode(self) -> bytes:
        """The octets of the message as an m-send-req."""
        data, size = c_void_p(), c_size_t()
        check(lib.mmsbrix_message_encode(self._handle, byref(data), byref(size)))
        return take(data, size)

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes ``encode()`` into a file."""
        octets = self.encode()
        with open(path, "wb") as file:
            file.write(octets)

    # ---- conversation

    def reply(self, *, own: str | None = None, **fields: Any) -> Message:
        """A message to everybody in this one but oneself (``own``), with its subject."""
        answer = Message(**fields)
        check(
            lib.mmsbrix_message_reply_to(answer._handle, self._handle, *encoded(own or "")),
            f"own: {own!r}",
        )
        return answer

    def send(
        self,
        url: str,
        *,
        proxy: str | None = None,
        progress: Progress | None = None,
        **options: Any,
    ) -> Result:
        """Submits the message; raises RelayError when the relay does not accept it.

        ``options`` are those of :class:`mmsbrix.Relay`.
        """
        from .relay import Relay

        with Relay(url, proxy=proxy, progress=progress, **options) as relay:
            return relay.send(self)


def loads(data: bytes) -> Message:
    """A message from the octets of any MMS PDU; what is broken leaves it with what is there."""
    handle = c_void_p()
    check(lib.mmsbrix_message_decode(data, len(data), byref(handle)))
    return Message._of(handle.value)


def load(path: str | os.PathLike[str]) -> Message:
    """A message from a file."""
    with open(path, "rb") as file:
        return loads(file.read())


@dataclass(frozen=True)
class Field:
    """A field of a PDU's header block."""

    offset: int
    length: int
    code: int
    name: str
    value: str


@dataclass(frozen=True)
class Remark:
    """Something odd about a PDU."""

    offset: int
    text: str


@dataclass(frozen=True)
class Inspection:
    """All that is in a PDU, and what is odd about it."""

    type: int
    fields: list[Field]
    remarks: list[Remark]


def inspect(data: bytes) -> Inspection:
    """Inspects any octets: what cannot be read becomes a remark."""
    handle = c_void_p()
    check(lib.mmsbrix_inspect(data, len(data), byref(handle)))

    def text(address: int | None, length: int) -> str:
        return octets_at(address, length).decode(errors="replace")

    try:
        fields = []
        field = _library.Field()
        for index in range(lib.mmsbrix_inspection_field_count(handle)):
            check(lib.mmsbrix_inspection_field(handle, index, byref(field)))
            name = text(field.name, field.name_length)
            value = text(field.value, field.value_length)
            fields.append(Field(field.offset, field.length, field.code, name, value))
        remarks = []
        remark = _library.Remark()
        for index in range(lib.mmsbrix_inspection_remark_count(handle)):
            check(lib.mmsbrix_inspection_remark(handle, index, byref(remark)))
            remarks.append(Remark(remark.offset, text(remark.text, remark.text_length)))
        return Inspection(lib.mmsbrix_inspection_type(handle), fields, remarks)
    finally:
        lib.mmsbrix_inspection_free(handle)

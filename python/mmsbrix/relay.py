"""Relays: sending to them, fetching from them, and answering."""

from __future__ import annotations

import math
from collections.abc import Callable, Mapping
from ctypes import byref, c_int32, c_size_t, c_uint32, c_uint64, c_void_p, string_at
from dataclasses import dataclass
from types import TracebackType

from . import _library
from ._library import OK, lib, octets_at
from .message import Message, MmsError, check, encoded, loads, take

Progress = Callable[[int, int], "bool | None"]
"""Called with the octets done and their total, 0 when unknown; False cancels."""

_KINDS = ("none", "response status", "HTTP status", "error", "retrieve status", "WSP status")
_STATUSES = {"expired": 0x80, "retrieved": 0x81, "rejected": 0x82, "deferred": 0x83}
_FAILED = 8


@dataclass(frozen=True)
class Result:
    """What became of a submission or retrieval."""

    kind: str
    """What kind of number the code is, such as ``response status`` or ``HTTP status``."""
    code: int
    text: str = ""
    """What the relay says."""
    detail: str = ""
    """What the code alone does not tell."""

    def __str__(self) -> str:
        plain = self.kind in ("none", "HTTP status", "error")
        number = str(self.code) if plain else f"0x{self.code:02X}"
        words = [f"{self.kind} {number}"]
        if self.text:
            words.append(": " + " ".join(self.text.split()))
        if self.detail:
            words.append(f" ({self.detail})")
        return "".join(words)


class RelayError(MmsError):
    """The relay, or the way to it, did not do what was asked."""

    def __init__(self, result: Result) -> None:
        super().__init__(str(result))
        self.result = result


@dataclass(frozen=True)
class Notification:
    """An m-notification-ind: a message waits at ``url``."""

    url: str
    transaction_id: str
    octets: int
    """Announced size of the message, 0 when it is not."""

    @classmethod
    def loads(cls, data: bytes) -> Notification:
        """Reads the octets of a notification."""
        url, transaction, octets = c_void_p(), c_void_p(), c_uint64()
        check(
            lib.mmsbrix_notification_decode(
                data, len(data), byref(url), byref(transaction), byref(octets)
            )
        )
        texts = []
        for address in (url, transaction):
            texts.append(string_at(address.value or 0).decode(errors="replace"))
            lib.mmsbrix_free(address)
        return cls(texts[0], texts[1], octets.value)


def _endpoint(text: str, usual_port: int) -> tuple[bytes, int, int]:
    """A host or HOST:PORT as pointer, length and port; IPv6 addresses in brackets."""
    host, colon, port = text.rpartition(":")
    if not colon or text.endswith("]"):
        host, port = text, str(usual_port)
    if not host or not port.isdecimal() or not 0 < int(port) < 65536:
        raise ValueError(f"not HOST:PORT: {text!r}")
    return *encoded(host.strip("[]")), int(port)


class Relay:
    """The way to a relay, by HTTP or through a WAP gateway.

    Use it in a ``with`` statement, or ``close`` it.  ``proxy`` and ``wap`` are ``HOST[:PORT]``.
    Through a WAP gateway messages can be sent and nothing else be done, and of the options only
    ``timeout`` and ``max_size`` count.  ``timeout`` is in seconds: by HTTP those without an octet,
    60 when not given, through a gateway those until its answer, 600 when not given.  ``max_size``
    is in octets, 0 for no limit.
    """

    def __init__(
        self,
        url: str,
        *,
        proxy: str | None = None,
        wap: str | None = None,
        timeout: float | None = None,
        user: str = "",
        password: str = "",
        headers: Mapping[str, str] | None = None,
        user_agent: str | None = None,
        certificates: str | None = None,
        max_size: int = 0,
        progress: Progress | None = None,
    ) -> None:
        self.url = url
        self._error: BaseException | None = None
        self._handle: int | None = lib.mmsbrix_transport_new()
        if not self._handle:
            raise MemoryError
        if proxy:
            lib.mmsbrix_transport_set_proxy(self._handle, *_endpoint(proxy, 80))
        if wap:
            if proxy:
                raise ValueError("either a proxy or a WAP gateway")
            lib.mmsbrix_transport_set_gateway(self._handle, *_endpoint(wap, 9201))
        if timeout is not None:
            if timeout <= 0:
                raise ValueError("timeout: not above 0")
            lib.mmsbrix_transport_set_timeout(self._handle, math.ceil(min(timeout, 86400)))
        lib.mmsbrix_transport_set_credentials(
            self._handle, *encoded(user), *encoded(password)
        )
        for name, value in (headers or {}).items():
            check(
                lib.mmsbrix_transport_add_header(self._handle, *encoded(name), *encoded(value)),
                f"header {name!r}",
            )
        if user_agent is not None:
            check(
                lib.mmsbrix_transport_set_user_agent(self._handle, *encoded(user_agent)),
                "user_agent",
            )
        if certificates is not None:
            lib.mmsbrix_transport_set_certificates(self._handle, *encoded(certificates))
        lib.mmsbrix_transport_set_size_limit(self._handle, max_size)
        # Kept here, since the library calls it.
        self._callback = (
            _library.Progress(self._tell(progress)) if progress else _library.Progress(0)
        )
        lib.mmsbrix_transport_set_progress(self._handle, self._callback, None)

    def _tell(self, progress: Progress) -> Callable[[object, int, int], int]:
        def tell(_context: object, done: int, total: int) -> int:
            try:
                return 1 if progress(done, total) is False else 0
            except BaseException as error:  # raised again where the operation ends
                self._error = error
                return 1

        return tell

    def close(self) -> None:
        """Ends the connection."""
        handle, self._handle = getattr(self, "_handle", None), None
        if handle:
            lib.mmsbrix_transport_free(handle)

    __del__ = close

    def __enter__(self) -> Relay:
        return self

    def __exit__(
        self,
        kind: type[BaseException] | None,
        error: BaseException | None,
        trace: TracebackType | None,
    ) -> None:
        self.close()

    @property
    def result(self) -> Result:
        """The result of the last operation."""
        kind, code = c_int32(), c_uint32()
        text, text_length = c_void_p(), c_size_t()
        detail, detail_length = c_void_p(), c_size_t()
        check(
            lib.mmsbrix_transport_result(
                self._handle,
                byref(kind),
                byref(code),
                byref(text),
                byref(text_length),
                byref(detail),
                byref(detail_length),
            )
        )
        return Result(
            _KINDS[kind.value],
            code.value,
            octets_at(text.value, text_length.value).decode(errors="replace"),
            octets_at(detail.value, detail_length.value).decode(errors="replace"),
        )

    def _end(self, status: int) -> Result:
        error, self._error = self._error, None
        if error is not None:
            raise error
        if status not in (OK, _FAILED):
            check(status)
        result = self.result
        if status == _FAILED:
            raise RelayError(result)
        return result

    def send(self, message: Message | bytes) -> Result:
        """Submits a message, or the octets of one."""
        octets = message if isinstance(message, bytes) else message.encode()
        return self._end(
            lib.mmsbrix_transport_send_octets(
                self._handle, *encoded(self.url), octets, len(octets)
            )
        )

    def fetch(self, url: str | None = None) -> Message:
        """Fetches the message that waits at a URL; without one, at the relay's."""
        handle = c_void_p()
        self._end(
            lib.mmsbrix_transport_fetch(self._handle, *encoded(url or self.url), byref(handle))
        )
        return Message._of(handle.value)

    def _report(self, octets: bytes, url: str | None) -> Result:
        return self._end(
            lib.mmsbrix_transport_report(
                self._handle, *encoded(url or self.url), octets, len(octets)
            )
        )

    def answer(
        self,
        notification: Notification,
        status: str = "retrieved",
        *,
        report_allowed: bool | None = None,
    ) -> Result:
        """Tells what became of a message that was announced: ``retrieved``, ``deferred`` ..."""
        data, size = c_void_p(), c_size_t()
        allowed = -1 if report_allowed is None else int(report_allowed)
        check(
            lib.mmsbrix_notifyresp_encode(
                *encoded(notification.transaction_id),
                _STATUSES[status],
                allowed,
                byref(data),
                byref(size),
            )
        )
        return self._report(take(data, size), None)

    def acknowledge(self, transaction_id: str) -> Result:
        """Answers a message that was fetched later than its notification was answered."""
        data, size = c_void_p(), c_size_t()
        check(
            lib.mmsbrix_acknowledge_encode(
                *encoded(transaction_id), -1, byref(data), byref(size)
            )
        )
        return self._report(take(data, size), None)

    def report_read(self, message: Message, *, deleted: bool = False) -> Result:
        """Tells the sender of a received message that it was read, or deleted unread."""
        data, size = c_void_p(), c_size_t()
        check(
            lib.mmsbrix_read_report_encode(
                message._handle, int(not deleted), byref(data), byref(size)
            )
        )
        return self._report(take(data, size), None)


def fetch(url: str, *, proxy: str | None = None, progress: Progress | None = None) -> Message:
    """Fetches the message that waits at a URL."""
    with Relay(url, proxy=proxy, progress=progress) as relay:
        return relay.fetch()

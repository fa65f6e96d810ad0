"""The C interface as ctypes sees it: the functions of ``mmsbrix/capi.h`` and their types."""

from __future__ import annotations

import ctypes

import os
from ctypes import (
    CFUNCTYPE,
    POINTER,
    c_char_p,
    c_int32,
    c_int64,
    c_size_t,
    c_uint16,
    c_uint32,
    c_uint64,
    c_void_p,
)
from typing import Any

OK = 0
NOT_PRESENT = 2
ZERO_TERMINATED = c_size_t(-1).value

Progress = CFUNCTYPE(c_int32, c_void_p, c_uint64, c_uint64)


class Slide(ctypes.Structure):
    _fields_ = [
        ("text", c_char_p),
        ("image", c_char_p),
        ("audio", c_char_p),
        ("duration_milliseconds", c_uint32),
    ]


class Field(ctypes.Structure):
    _fields_ = [
        ("offset", c_uint64),
        ("length", c_uint64),
        ("code", c_int32),
        ("page", c_int32),
        ("name", c_void_p),
        ("name_length", c_size_t),
        ("value", c_void_p),
        ("value_length", c_size_t),
    ]


class Remark(ctypes.Structure):
    _fields_ = [
        ("offset", c_uint64),
        ("kind", c_int32),
        ("text", c_void_p),
        ("text_length", c_size_t),
    ]


_TEXT = (c_char_p, c_size_t)
_TEXT_OUT = (POINTER(c_void_p), POINTER(c_size_t))
_HANDLE = c_void_p
_HANDLE_OUT = POINTER(c_void_p)

# Name, type of the result, types of the arguments.
_FUNCTIONS: list[tuple[str, Any, tuple[Any, ...]]] = [
    ("status_text", c_char_p, (c_int32,)),
    ("version", c_char_p, ()),
    ("free", None, (c_void_p,)),
    ("message_new", _HANDLE, ()),
    ("message_free", None, (_HANDLE,)),
    ("message_decode", c_int32, (c_char_p, c_size_t, _HANDLE_OUT)),
    ("message_encode", c_int32, (_HANDLE, *_TEXT_OUT)),
    ("message_set_number", c_int32, (_HANDLE, c_int32, c_int64)),
    ("message_number", c_int32, (_HANDLE, c_int32, POINTER(c_int64))),
    ("message_set_text", c_int32, (_HANDLE, c_int32, *_TEXT)),
    ("message_text", c_int32, (_HANDLE, c_int32, *_TEXT_OUT)),
    ("message_add_recipient", c_int32, (_HANDLE, c_int32, *_TEXT, c_int32)),
    ("message_recipient_count", c_size_t, (_HANDLE, c_int32)),
    (
        "message_recipient",
        c_int32,
        (_HANDLE, c_int32, c_size_t, *_TEXT_OUT, POINTER(c_int32)),
    ),
    ("message_attach", c_int32, (_HANDLE, *_TEXT, *_TEXT, *_TEXT)),
    ("message_set_slides", c_int32, (_HANDLE, POINTER(Slide), c_size_t)),
    ("message_part_count", c_size_t, (_HANDLE,)),
    ("message_part_text", c_int32, (_HANDLE, c_size_t, c_int32, *_TEXT_OUT)),
    ("message_part_data", c_int32, (_HANDLE, c_size_t, *_TEXT_OUT)),
    ("message_reply_to", c_int32, (_HANDLE, _HANDLE, *_TEXT)),
    ("message_extract", c_int32, (_HANDLE, *_TEXT, _HANDLE_OUT)),
    ("files_count", c_size_t, (_HANDLE,)),
    (
        "files_get",
        c_int32,
        (
            _HANDLE,
            c_size_t,
            *_TEXT_OUT,
            *_TEXT_OUT,
            POINTER(c_uint64),
            POINTER(c_uint32),
        ),
    ),
    ("files_free", None, (_HANDLE,)),
    ("inspect", c_int32, (c_char_p, c_size_t, _HANDLE_OUT)),
    ("inspection_free", None, (_HANDLE,)),
    ("inspection_type", c_int32, (_HANDLE,)),
    ("inspection_field_count", c_size_t, (_HANDLE,)),
    ("inspection_field", c_int32, (_HANDLE, c_size_t, POINTER(Field))),
    ("inspection_remark_count", c_size_t, (_HANDLE,)),
    ("inspection_remark", c_int32, (_HANDLE, c_size_t, POINTER(Remark))),
    ("transport_new", _HANDLE, ()),
    ("transport_free", None, (_HANDLE,)),
    ("transport_set_proxy", c_int32, (_HANDLE, *_TEXT, c_uint16)),
    ("transport_set_gateway", c_int32, (_HANDLE, *_TEXT, c_uint16)),
    ("transport_set_timeout", c_int32, (_HANDLE, c_uint32)),
    ("transport_set_credentials", c_int32, (_HANDLE, *_TEXT, *_TEXT)),
    ("transport_set_user_agent", c_int32, (_HANDLE, *_TEXT)),
    ("transport_add_header", c_int32, (_HANDLE, *_TEXT, *_TEXT)),
    ("transport_set_certificates", c_int32, (_HANDLE, *_TEXT)),
    ("transport_set_size_limit", c_int32, (_HANDLE, c_uint64)),
    ("transport_set_progress", c_int32, (_HANDLE, Progress, c_void_p)),
    ("transport_send_octets", c_int32, (_HANDLE, *_TEXT, c_char_p, c_size_t)),
    ("transport_fetch", c_int32, (_HANDLE, *_TEXT, _HANDLE_OUT)),
    ("transport_fetched", c_int32, (_HANDLE, *_TEXT_OUT)),
    ("transport_report", c_int32, (_HANDLE, *_TEXT, c_char_p, c_size_t)),
    (
        "transport_result",
        c_int32,
        (_HANDLE, POINTER(c_int32), POINTER(c_uint32), *_TEXT_OUT, *_TEXT_OUT),
    ),
    (
        "notification_decode",
        c_int32,
        (c_char_p, c_size_t, POINTER(c_void_p), POINTER(c_void_p), POINTER(c_uint64)),
    ),
    ("notifyresp_encode", c_int32, (*_TEXT, c_int32, c_int32, *_TEXT_OUT)),
    ("acknowledge_encode", c_int32, (*_TEXT, c_int32, *_TEXT_OUT)),
    ("read_report_encode", c_int32, (_HANDLE, c_int32, *_TEXT_OUT)),
]


def _open() -> ctypes.CDLL:
    path = os.environ.get("MMSBRIX_LIBRARY")
    library = ctypes.CDLL(path or "libmmsbrix.so.1")
    for name, result, arguments in _FUNCTIONS:
        function = getattr(library, "mmsbrix_" + name)
        function.restype = result
        function.argtypes = arguments
    return library


lib = _open()


def status_text(status: int) -> str:
    """What a status of the C interface means."""
    text: bytes = lib.mmsbrix_status_text(status)
    return text.decode()


def octets_at(address: int | None, length: int) -> bytes:
    """A copy of octets that the library owns."""
    return ctypes.string_at(address, length) if address else b""

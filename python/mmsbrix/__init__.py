"""Multimedia messages (MMS): compose, read, send and fetch them.

    >>> import mmsbrix
    >>> message = mmsbrix.Message(to=["+358401234567"], subject="Look!")
    >>> message.attach("photo.jpg").send("http://mmsc.example/mms", proxy="10.1.1.1:8080")
    >>> [part.type for part in mmsbrix.load("received.mms").parts]

Pure Python over the C interface of libmmsbrix.  The environment variable MMSBRIX_LIBRARY names
another file of the library than the system's.
"""

from __future__ import annotations

from ._library import lib as _lib
from .message import (
    Field,
    Inspection,
    Message,
    MmsError,
    Part,
    Remark,
    Slide,
    inspect,
    load,
    loads,
)
from .relay import Notification, Progress, Relay, RelayError, Result, fetch

__all__ = [
    "Field",
    "Inspection",
    "Message",
    "MmsError",
    "Notification",
    "Part",
    "Progress",
    "Relay",
    "RelayError",
    "Remark",
    "Result",
    "Slide",
    "fetch",
    "inspect",
    "load",
    "loads",
]
__version__: str = _lib.mmsbrix_version().decode()

"""Where the library's log lines go."""

from __future__ import annotations

import ctypes as c
from typing import Callable, Optional

from . import _native as native

_writer = native.LOG()  # kept alive while the library may call it


def set_log(write: Optional[Callable[[str], None]]) -> None:
    """Hands every line to `write`, or sends them again where the environment variable ZEL_LOG says, which is standard
    output unless it is set."""
    global _writer
    writer = native.LOG() if write is None else native.LOG(
        lambda _user, text, count: write(c.string_at(text, count).decode(errors="replace")))
    native.lib.zelc_set_log(writer, None)
    _writer = writer

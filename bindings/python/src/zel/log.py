"""Where the library's log lines go."""

from __future__ import annotations

import ctypes as c
import os
from typing import Callable, Optional

from . import _native as native

_writer = native.LOG(0)  # kept alive while the library may call it


def _handing_over(write: Callable[[str], None]):
    return native.LOG(lambda _user, text, count: write(c.string_at(text, count).decode(errors="replace")))


def set_log(write: Optional[Callable[[str], None]]) -> None:
    """Hands every line to `write`. With None, as in the beginning, they go where the environment variable ZEL_LOG says
    ("stdout", "stderr" or the name of a file), and nowhere if it is not set."""
    global _writer
    writer = native.LOG(0) if write is None else _handing_over(write)
    if write is None and "ZEL_LOG" not in os.environ:  # standard output is the program's own
        native.lib.zelc_silence_log()
    else:
        native.lib.zelc_set_log(writer, None)
    _writer = writer


set_log(None)

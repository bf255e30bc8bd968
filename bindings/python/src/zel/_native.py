"""libzel-c as ctypes sees it: structs, functions, and how errors become exceptions."""

from __future__ import annotations

import ctypes as c
import ctypes.util
import os
import pathlib

_MAJOR = 1


class EndedError(RuntimeError):
    """Something was fed after the end of the stream."""


class BusyError(RuntimeError):
    """A callback asked for what would have to wait for that callback."""


class _Sized(c.Structure):
    """A struct that begins with its own size."""

    def __init__(self, **values):
        super().__init__(struct_size=c.sizeof(type(self)), **values)


class Frame(_Sized):
    _fields_ = [("struct_size", c.c_uint32), ("format", c.c_uint32), ("width", c.c_uint32), ("height", c.c_uint32),
                ("data", c.c_void_p * 3), ("stride", c.c_size_t * 3), ("is_damaged", c.c_uint32)]


class Audio(_Sized):
    _fields_ = [("struct_size", c.c_uint32), ("sample_rate", c.c_uint32), ("channels", c.c_uint32),
                ("samples", c.c_uint32), ("data", c.c_void_p)]


class Config(_Sized):
    _fields_ = [("struct_size", c.c_uint32), ("look_for_black", c.c_uint8), ("look_for_green", c.c_uint8),
                ("look_for_exposure", c.c_uint8), ("look_for_block", c.c_uint8), ("look_for_freeze", c.c_uint8),
                ("reserved", c.c_uint8 * 3), ("black_ratio", c.c_float), ("green_ratio", c.c_float),
                ("block_corners", c.c_float), ("freeze_frames", c.c_float), ("mute_level", c.c_float),
                ("low_voice_level", c.c_float), ("high_voice_level", c.c_float), ("no_voice_share", c.c_float),
                ("audio_period_s", c.c_double), ("heartbeat_s", c.c_uint32)]


class VideoVerdict(_Sized):
    _fields_ = [("struct_size", c.c_uint32), ("screen", c.c_uint32), ("exposure", c.c_uint32), ("is_block", c.c_uint32),
                ("is_freeze", c.c_uint32)]


class AudioVerdict(_Sized):
    _fields_ = [("struct_size", c.c_uint32), ("is_complete", c.c_uint32), ("level", c.c_uint32),
                ("voice_level", c.c_uint32), ("voice_share", c.c_float), ("is_mute", c.c_uint32),
                ("is_low_voice", c.c_uint32), ("is_high_voice", c.c_uint32), ("is_no_voice", c.c_uint32)]


class Kind(_Sized):
    _fields_ = [("struct_size", c.c_uint32), ("source", c.c_uint32), ("tier", c.c_uint32), ("reserved", c.c_uint32),
                ("name", c.c_char_p), ("unit", c.c_char_p), ("meaning", c.c_char_p), ("colour", c.c_char_p),
                ("min_s", c.c_double), ("gap_s", c.c_double)]


class Event(_Sized):
    _fields_ = [("struct_size", c.c_uint32), ("kind", c.c_uint32), ("start_s", c.c_double), ("end_s", c.c_double),
                ("share", c.c_double), ("is_open_at_end", c.c_uint32), ("counts", c.c_uint32),
                ("has_evidence", c.c_uint32), ("reserved", c.c_uint32), ("value", c.c_double), ("limit", c.c_double)]


class AnalyserOptions(_Sized):
    _fields_ = [("struct_size", c.c_uint32), ("has_video", c.c_uint8), ("has_audio", c.c_uint8), ("is_still", c.c_uint8),
                ("reserved", c.c_uint8), ("late_after_s", c.c_double)]


ON_VIDEO = c.CFUNCTYPE(None, c.c_void_p, c.c_int64, c.POINTER(VideoVerdict))
ON_AUDIO = c.CFUNCTYPE(None, c.c_void_p, c.c_int64, c.POINTER(AudioVerdict))
ON_REPORT = c.CFUNCTYPE(None, c.c_void_p, c.c_void_p, c.c_int)
ON_RAISED = c.CFUNCTYPE(None, c.c_void_p, c.c_uint32, c.c_double, c.c_double)
ON_CLEARED = c.CFUNCTYPE(None, c.c_void_p, c.POINTER(Event))
ON_SUSPECTED = c.CFUNCTYPE(None, c.c_void_p, c.c_uint32)
ON_GAP = c.CFUNCTYPE(None, c.c_void_p, c.c_uint32, c.c_double, c.c_double)
ON_FRAME = c.CFUNCTYPE(None, c.c_void_p, c.c_uint64, c.c_double, c.POINTER(VideoVerdict))
ON_PERIOD = c.CFUNCTYPE(None, c.c_void_p, c.c_double, c.c_double, c.POINTER(AudioVerdict))
VISIT = c.CFUNCTYPE(c.c_int, c.c_void_p, c.c_char_p, c.c_char_p)
LOG = c.CFUNCTYPE(None, c.c_void_p, c.POINTER(c.c_char), c.c_size_t)


class StreamCallbacks(_Sized):
    _fields_ = [("struct_size", c.c_uint32), ("reserved", c.c_uint32), ("user", c.c_void_p), ("on_video", ON_VIDEO),
                ("on_audio", ON_AUDIO), ("on_report", ON_REPORT)]


class AnalyserCallbacks(_Sized):
    _fields_ = [("struct_size", c.c_uint32), ("reserved", c.c_uint32), ("user", c.c_void_p), ("on_raised", ON_RAISED),
                ("on_cleared", ON_CLEARED), ("on_suspected", ON_SUSPECTED), ("on_gap", ON_GAP),
                ("on_frame", ON_FRAME), ("on_silence_period", ON_PERIOD), ("on_voice_period", ON_PERIOD)]


def _load() -> c.CDLL:
    """The library that ZEL_LIBRARY names, else the one that came with the package, else the system's."""
    name = f"libzel-c.so.{_MAJOR}"
    beside = pathlib.Path(__file__).parent / name
    try:
        library = c.CDLL(os.environ.get("ZEL_LIBRARY") or (str(beside) if beside.exists() else name))
    except OSError as error:
        raise ImportError(f"cannot load {name}: {error}; set ZEL_LIBRARY to where it is") from None
    library.zelc_version.restype = c.c_uint32
    if library.zelc_version() >> 16 != _MAJOR:
        raise ImportError(f"libzel-c has version {library.zelc_version():#x}, this package needs {_MAJOR}.x")
    return library


_ERRORS = {-1: ValueError, -2: MemoryError, -3: OSError, -4: BusyError, -5: EndedError, -6: RuntimeError}


def _checked(result, _function, _arguments):
    if result != 0:
        raise _ERRORS.get(result, RuntimeError)(lib.zelc_last_error().decode(errors="replace"))
    return result


_HANDLE = c.c_void_p
_NEW = c.POINTER(c.c_void_p)
_CALLS = {  # name: arguments; all give a code
    "zelc_config_default": [c.POINTER(Config)],
    "zelc_config_of_analyser": [c.POINTER(Config)],
    "zelc_detector_new": [c.POINTER(Config), _NEW],
    "zelc_detector_video": [_HANDLE, c.POINTER(Frame), c.POINTER(VideoVerdict)],
    "zelc_detector_audio": [_HANDLE, c.POINTER(Audio), c.POINTER(AudioVerdict)],
    "zelc_stream_new": [c.POINTER(Config), c.POINTER(StreamCallbacks), _NEW],
    "zelc_stream_video": [_HANDLE, c.POINTER(Frame), c.c_int64],
    "zelc_stream_audio": [_HANDLE, c.POINTER(Audio), c.c_int64],
    "zelc_stream_drops": [_HANDLE, c.POINTER(c.c_uint64), c.POINTER(c.c_uint64)],
    "zelc_stream_free": [_HANDLE],
    "zelc_kind_info": [c.c_uint32, c.POINTER(Kind)],
    "zelc_analyser_options_default": [c.POINTER(AnalyserOptions)],
    "zelc_analyser_new": [c.POINTER(AnalyserOptions), c.POINTER(AnalyserCallbacks), _NEW],
    "zelc_analyser_video": [_HANDLE, c.POINTER(Frame), c.c_double, c.c_double],
    "zelc_analyser_audio": [_HANDLE, c.POINTER(Audio), c.c_double],
    "zelc_analyser_end": [_HANDLE, c.c_double],
    "zelc_analyser_set_rule": [_HANDLE, c.c_uint32, c.c_double, c.c_double],
}

lib = _load()
lib.zelc_last_error.restype = c.c_char_p
lib.zelc_kind_count.restype = c.c_uint32
lib.zelc_unwrapped.argtypes, lib.zelc_unwrapped.restype = [c.c_double] * 3, c.c_double
lib.zelc_analyser_reached.argtypes, lib.zelc_analyser_reached.restype = [_HANDLE], c.c_double
lib.zelc_report_visit.argtypes, lib.zelc_report_visit.restype = [_HANDLE, VISIT, c.c_void_p], None
lib.zelc_silence_log.argtypes, lib.zelc_silence_log.restype = [], None
lib.zelc_set_log.argtypes, lib.zelc_set_log.restype = [LOG, c.c_void_p], None
for _name in ("zelc_detector_free", "zelc_analyser_free"):
    getattr(lib, _name).argtypes, getattr(lib, _name).restype = [_HANDLE], None
for _name, _arguments in _CALLS.items():
    _function = getattr(lib, _name)
    _function.argtypes, _function.restype, _function.errcheck = _arguments, c.c_int, _checked


class View(c.Structure):
    """Py_buffer: how any object with a buffer shows its memory, whoever made it."""

    _fields_ = [("buf", c.c_void_p), ("obj", c.py_object), ("len", c.c_ssize_t), ("itemsize", c.c_ssize_t),
                ("readonly", c.c_int), ("ndim", c.c_int), ("format", c.c_char_p), ("shape", c.POINTER(c.c_ssize_t)),
                ("strides", c.POINTER(c.c_ssize_t)), ("suboffsets", c.POINTER(c.c_ssize_t)), ("internal", c.c_void_p)]


_WITH_STRIDES_AND_FORMAT = 0x1C
_get_buffer = c.pythonapi.PyObject_GetBuffer
_get_buffer.argtypes, _get_buffer.restype = [c.py_object, c.POINTER(View), c.c_int], c.c_int
_release_buffer = c.pythonapi.PyBuffer_Release
_release_buffer.argtypes, _release_buffer.restype = [c.POINTER(View)], None


class Borrowed:
    """The memory of some objects, for the length of a with-block."""

    __slots__ = ("_views",)

    def __init__(self) -> None:
        self._views: list[View] = []

    def view(self, thing) -> View:
        view = View()
        _get_buffer(thing, c.byref(view), _WITH_STRIDES_AND_FORMAT)
        self._views.append(view)
        return view

    def __enter__(self) -> Borrowed:
        return self

    def __exit__(self, *_exception) -> None:
        for view in self._views:
            _release_buffer(c.byref(view))
        self._views.clear()

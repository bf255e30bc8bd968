"""A stream that is watched on threads of its own."""

from __future__ import annotations

import ctypes as c
from typing import Callable, Dict, Optional, Tuple

from . import _fed as fed
from . import _native as native
from .detection import AudioVerdict, Config, VideoVerdict, audio_verdict, video_verdict

Report = Dict[str, str]


def _report(handle: int) -> Report:
    fields: Report = {}

    def visit(_user, key: bytes, value: bytes) -> int:
        fields[key.decode(errors="replace")] = value.decode(errors="replace")
        return 0

    native.lib.zelc_report_visit(handle, native.VISIT(visit), None)
    return fields


def _on_video(told: Callable[[int, VideoVerdict], None]):
    return native.ON_VIDEO(lambda _user, index, verdict: told(index, video_verdict(verdict.contents)))


def _on_audio(told: Callable[[int, AudioVerdict], None]):
    return native.ON_AUDIO(lambda _user, index, verdict: told(index, audio_verdict(verdict.contents)))


def _on_report(told: Callable[[Report, bool], None]):
    return native.ON_REPORT(lambda _user, report, is_final: told(_report(report), is_final != 0))


class Stream:
    """Feeds copy and return, so that a player never waits for the detectors.

    The callbacks run on the library's threads: `on_video(index, verdict)`, `on_audio(index, verdict)` when a period of
    audio is complete, `on_report(fields, is_final)` every `heartbeat` seconds and once at the end. What they raise goes to
    `sys.unraisablehook`. Any thread may feed.
    """

    def __init__(self, config: Config = Config(), *, heartbeat: int = 0,
                 on_video: Optional[Callable[[int, VideoVerdict], None]] = None,
                 on_audio: Optional[Callable[[int, AudioVerdict], None]] = None,
                 on_report: Optional[Callable[[Report, bool], None]] = None) -> None:
        self._handle = c.c_void_p()
        self._callbacks = native.StreamCallbacks()  # kept alive as long as the stream
        if on_video is not None:
            self._callbacks.on_video = _on_video(on_video)
        if on_audio is not None:
            self._callbacks.on_audio = _on_audio(on_audio)
        if on_report is not None:
            self._callbacks.on_report = _on_report(on_report)
        native.lib.zelc_stream_new(c.byref(config.native(heartbeat)), c.byref(self._callbacks), c.byref(self._handle))

    def video(self, frame: fed.FrameData, index: int = 0, pixel_format: str = "i420") -> None:
        """Queues a copy of a frame; `index` comes back with its verdict."""
        with native.Borrowed() as borrowed:
            native.lib.zelc_stream_video(self._open(), c.byref(fed.frame(frame, pixel_format, borrowed)), index)

    def audio(self, samples: fed.Buffer, sample_rate: int, index: int = 0, channels: Optional[int] = None) -> None:
        """Queues a copy of a piece of audio; see `Detector.audio`."""
        with native.Borrowed() as borrowed:
            native.lib.zelc_stream_audio(self._open(), c.byref(fed.audio(samples, sample_rate, channels, borrowed)),
                                         index)

    @property
    def drops(self) -> Tuple[int, int]:
        """Frames, and steps of 10 ms of audio, that were dropped because the detectors were behind."""
        video, audio = c.c_uint64(), c.c_uint64()
        native.lib.zelc_stream_drops(self._open(), c.byref(video), c.byref(audio))
        return video.value, audio.value

    def close(self) -> None:
        """Stops: the final report goes out, and no callback comes any more. A second call does nothing."""
        if self._handle:
            native.lib.zelc_stream_free(self._handle)
            self._handle = c.c_void_p()

    def _open(self) -> c.c_void_p:
        if not self._handle:
            raise native.EndedError("the stream is closed")
        return self._handle

    def __enter__(self) -> Stream:
        return self

    def __exit__(self, *_exception) -> None:
        self.close()

    def __del__(self) -> None:
        if getattr(self, "_handle", None):
            self.close()

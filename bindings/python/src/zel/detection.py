"""Verdicts, one frame at a time."""

from __future__ import annotations

import ctypes as c
import enum
from dataclasses import dataclass, fields
from typing import NamedTuple, Optional

from . import _fed as fed
from . import _native as native


class Screen(enum.IntEnum):
    NORMAL = 0
    BLACK = 1
    GREEN = 2


class Exposure(enum.IntEnum):
    NORMAL = 0
    UNDER = 1
    OVER = 2


class VideoVerdict(NamedTuple):
    screen: Screen
    exposure: Exposure
    block: bool
    freeze: bool


class AudioVerdict(NamedTuple):
    """Over one period of audio; levels are mean absolute sample values, 0 to 32768."""

    level: int
    voice_level: int
    voice_share: float
    mute: bool
    low_voice: bool
    high_voice: bool
    no_voice: bool


_NATIVE_NAMES = {"audio_period": "audio_period_s"}  # of the fields that have another one in C


@dataclass(frozen=True)
class Config:
    """What to look for and how strictly; the defaults are the library's."""

    look_for_black: bool = True
    look_for_green: bool = True
    look_for_exposure: bool = True
    look_for_block: bool = True
    look_for_freeze: bool = True
    black_ratio: float = 0.95  #: share of dark samples that makes a black screen
    green_ratio: float = 0.95  #: share of zero samples that makes a green screen
    block_corners: float = 20.0  #: pairs of corners that make a frame blocky
    freeze_frames: float = 10.0  #: like frames in a row that make a freeze
    mute_level: float = 2.0  #: level up to which a period is mute
    low_voice_level: float = 500.0  #: voiced level up to which a period is too quiet
    high_voice_level: float = 20000.0  #: and from which it is too loud
    no_voice_share: float = 0.01  #: share of voiced sound up to which a period has no voice
    audio_period: float = 10.0  #: length of an audio period, seconds

    @classmethod
    def of_analyser(cls) -> Config:
        """What an `Analyser` asks its detectors for."""
        own = native.Config()
        native.lib.zelc_config_of_analyser(c.byref(own))
        standard = cls()
        return cls(**{field.name: type(getattr(standard, field.name))(getattr(own, _NATIVE_NAMES.get(field.name, field.name)))
                      for field in fields(cls)})

    def native(self, heartbeat: int = 0) -> native.Config:
        values = {_NATIVE_NAMES.get(field.name, field.name): getattr(self, field.name) for field in fields(self)}
        return native.Config(heartbeat_s=heartbeat, **values)


def video_verdict(verdict: native.VideoVerdict) -> VideoVerdict:
    return VideoVerdict(Screen(verdict.screen), Exposure(verdict.exposure), verdict.is_block != 0,
                        verdict.is_freeze != 0)


def audio_verdict(verdict: native.AudioVerdict) -> AudioVerdict:
    """Of a period that is complete."""
    return AudioVerdict(verdict.level, verdict.voice_level, verdict.voice_share, verdict.is_mute != 0,
                        verdict.is_low_voice != 0, verdict.is_high_voice != 0, verdict.is_no_voice != 0)


class Detector:
    """All detectors of one stream, on the calling thread; one thread at a time."""

    def __init__(self, config: Config = Config()) -> None:
        self._handle = c.c_void_p()
        self._seen = native.VideoVerdict()
        self._heard = native.AudioVerdict()
        native.lib.zelc_detector_new(c.byref(config.native()), c.byref(self._handle))

    def video(self, frame: fed.FrameData, pixel_format: str = "i420") -> VideoVerdict:
        """The verdicts on the next frame."""
        with native.Borrowed() as borrowed:
            native.lib.zelc_detector_video(self._open(), c.byref(fed.frame(frame, pixel_format, borrowed)),
                                           c.byref(self._seen))
        return video_verdict(self._seen)

    def audio(self, samples: fed.Buffer, sample_rate: int, channels: Optional[int] = None) -> Optional[AudioVerdict]:
        """Takes in the next piece of audio; what the last period that it completed gave, or None.

        `samples` has one row per sample and one column per channel, or is flat with `channels` (1) given.
        """
        with native.Borrowed() as borrowed:
            native.lib.zelc_detector_audio(self._open(),
                                           c.byref(fed.audio(samples, sample_rate, channels, borrowed)),
                                           c.byref(self._heard))
        return audio_verdict(self._heard) if self._heard.is_complete else None

    def close(self) -> None:
        """Frees the detectors. A second call does nothing."""
        handle, self._handle = self._handle, c.c_void_p()
        native.lib.zelc_detector_free(handle)

    def _open(self) -> c.c_void_p:
        if not self._handle:
            raise ValueError("the detector is closed")
        return self._handle

    def __enter__(self) -> Detector:
        return self

    def __exit__(self, *_exception) -> None:
        self.close()

    def __del__(self) -> None:
        if getattr(self, "_handle", None):
            self.close()

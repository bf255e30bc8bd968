"""Time-stamped frames in, events out."""

from __future__ import annotations

import ctypes as c
import enum
import math
from dataclasses import dataclass
from typing import Callable, Iterable, Iterator, List, Mapping, Optional, Tuple, Union

from . import _fed as fed
from . import _native as native
from .detection import AudioVerdict, VideoVerdict, audio_verdict, video_verdict


class Source(enum.IntEnum):
    """Where a kind's verdicts come from."""

    VIDEO = 0
    AUDIO = 1
    TIMESTAMPS = 2
    INPUT = 3  #: demuxer and decoder: an analyser, which sees neither, never tells of these


class Tier(enum.IntEnum):
    FAULT = 0  #: wrong in any stream
    LOOK = 1  #: may be as it was meant to be, as a night scene and music without words are


@dataclass(frozen=True)
class Kind:
    """What can be wrong over a stretch of a stream."""

    name: str
    source: Source
    tier: Tier
    unit: str  #: what is measured
    meaning: str
    colour: str  #: "#rrggbb", for charts
    min: float  #: the default rule: seconds that it lasts at least
    gap: float  #: seconds without it that end an event


def _kind(number: int) -> Kind:
    info = native.Kind()
    native.lib.zelc_kind_info(number, c.byref(info))
    return Kind(info.name.decode(), Source(info.source), Tier(info.tier), info.unit.decode(), info.meaning.decode(),
                info.colour.decode(), info.min_s, info.gap_s)


KINDS: Tuple[Kind, ...] = tuple(_kind(number) for number in range(native.lib.zelc_kind_count()))
"""In the order of reports."""

_NUMBERS = {kind.name: number for number, kind in enumerate(KINDS)}


@dataclass(frozen=True)
class Raised:
    """A fault has lasted its minimum: it began at `start`, and that was known when the stream was at `noticed`."""

    kind: str
    start: float
    noticed: float

    @property
    def info(self) -> Kind:
        """The row of `KINDS`."""
        return KINDS[_NUMBERS[self.kind]]


@dataclass(frozen=True)
class Event:
    """A stretch in which something was wrong, in seconds on the clock of the stream's first timestamps."""

    kind: str
    start: float
    end: float
    share: float  #: of the stretch in which the fault was measured, 0 to 1
    is_open_at_end: bool  #: still there when the stream ended
    value: Optional[float]  #: what was measured on average, in the unit of the kind
    limit: Optional[float]  #: and what it was held against

    @property
    def info(self) -> Kind:
        """The row of `KINDS`."""
        return KINDS[_NUMBERS[self.kind]]


@dataclass(frozen=True)
class Gap:
    """A track has no frame for at least as long as the shortest stall."""

    track: Source  #: VIDEO or AUDIO
    start: float
    end: float


@dataclass(frozen=True)
class VideoFrame:
    data: fed.FrameData
    time: float  #: seconds
    duration: float = 0.0  #: seconds; 0 if it is not known
    pixel_format: str = "i420"
    is_damaged: bool = False  #: a decoder made up part of it, or did without a frame that it refers to


@dataclass(frozen=True)
class AudioFrame:
    samples: fed.Buffer
    sample_rate: int
    time: float  #: seconds
    channels: Optional[int] = None  #: of flat samples; 1 if it is not given


def _on_suspected(told: Callable[[str], None]):
    return native.ON_SUSPECTED(lambda _user, kind: told(KINDS[kind].name))


def _on_gap(told: Callable[[Gap], None]):
    return native.ON_GAP(lambda _user, track, start, end: told(Gap(Source(track), start, end)))


def _on_frame(told: Callable[[int, float, VideoVerdict], None]):
    return native.ON_FRAME(lambda _user, index, start, verdict: told(index, start, video_verdict(verdict.contents)))


def _on_period(told: Callable[[float, float, AudioVerdict], None]):
    return native.ON_PERIOD(lambda _user, start, end, verdict: told(start, end, audio_verdict(verdict.contents)))


class Analyser:
    """Finds the events of one stream, live or from a file; one thread at a time.

    `rules` gives the shortest event and the gap that ends one, both in seconds, per kind: {"freeze": (5, 0.1)}. For live
    streams `late_after` is how many seconds a track may fall behind the other before it stalls.

    Who wants more than events is called while a feed lasts: `on_suspected(kind)` where a fault is seen that may become an
    event, `on_gap(gap)`, `on_frame(index, start, verdict)` for each frame, and for each tenth of a second of audio, and each
    second of it, `on_silence_period` and `on_voice_period` `(start, end, verdict)`. They must not feed, and what they raise
    goes to `sys.unraisablehook`.
    """

    def __init__(self, *, video: bool = True, audio: bool = True, is_still: bool = False,
                 late_after: Optional[float] = None,
                 rules: Optional[Mapping[str, Tuple[float, float]]] = None,
                 on_suspected: Optional[Callable[[str], None]] = None,
                 on_gap: Optional[Callable[[Gap], None]] = None,
                 on_frame: Optional[Callable[[int, float, VideoVerdict], None]] = None,
                 on_silence_period: Optional[Callable[[float, float, AudioVerdict], None]] = None,
                 on_voice_period: Optional[Callable[[float, float, AudioVerdict], None]] = None) -> None:
        self._handle = c.c_void_p()
        self._found: List[Union[Raised, Event]] = []
        self._callbacks = native.AnalyserCallbacks()
        self._callbacks.on_raised = native.ON_RAISED(self._on_raised)
        self._callbacks.on_cleared = native.ON_CLEARED(self._on_cleared)
        if on_suspected is not None:
            self._callbacks.on_suspected = _on_suspected(on_suspected)
        if on_gap is not None:
            self._callbacks.on_gap = _on_gap(on_gap)
        if on_frame is not None:
            self._callbacks.on_frame = _on_frame(on_frame)
        if on_silence_period is not None:
            self._callbacks.on_silence_period = _on_period(on_silence_period)
        if on_voice_period is not None:
            self._callbacks.on_voice_period = _on_period(on_voice_period)
        options = native.AnalyserOptions(has_video=video, has_audio=audio, is_still=is_still,
                                         late_after_s=-1.0 if late_after is None else late_after)
        native.lib.zelc_analyser_new(c.byref(options), c.byref(self._callbacks), c.byref(self._handle))
        for kind, (shortest, gap) in (rules or {}).items():
            self.set_rule(kind, shortest, gap)

    def video(self, frame: fed.FrameData, time: float, duration: float = 0.0, pixel_format: str = "i420",
              is_damaged: bool = False) -> List[Union[Raised, Event]]:
        """Takes the next frame, shown from `time` on; what was raised and cleared by it.

        Timestamps may jump, but those of few bits are to be unwrapped, see `unwrapped`.
        """
        with native.Borrowed() as borrowed:
            own = fed.frame(frame, pixel_format, borrowed)
            own.is_damaged = is_damaged
            native.lib.zelc_analyser_video(self._open(), c.byref(own), time, duration)
        return self._take()

    def audio(self, samples: fed.Buffer, sample_rate: int, time: float,
              channels: Optional[int] = None) -> List[Union[Raised, Event]]:
        """Takes the next piece of audio, which begins at `time`; see `Detector.audio`."""
        with native.Borrowed() as borrowed:
            native.lib.zelc_analyser_audio(self._open(), c.byref(fed.audio(samples, sample_rate, channels, borrowed)),
                                           time)
        return self._take()

    def feed(self, item: Union[VideoFrame, AudioFrame]) -> List[Union[Raised, Event]]:
        """Takes either."""
        if isinstance(item, VideoFrame):
            return self.video(item.data, item.time, item.duration, item.pixel_format, item.is_damaged)
        return self.audio(item.samples, item.sample_rate, item.time, item.channels)

    def end(self, declared: Optional[float] = None) -> List[Union[Raised, Event]]:
        """The stream is over, and said that it would last `declared` seconds: the rest of what it had."""
        native.lib.zelc_analyser_end(self._open(), math.nan if declared is None else declared)
        return self._take()

    def set_rule(self, kind: str, shortest: float, gap: float) -> None:
        """Changes the rule for a kind, both in seconds; holds for an event under way as well."""
        if kind not in _NUMBERS:
            raise ValueError(f"no such kind of event: {kind!r}; there are {', '.join(_NUMBERS)}")
        native.lib.zelc_analyser_set_rule(self._open(), _NUMBERS[kind], shortest, gap)

    @property
    def reached(self) -> float:
        """How far the stream has come, in seconds."""
        return native.lib.zelc_analyser_reached(self._open())

    def close(self) -> None:
        """Frees the analyser; what is open stays unsaid. A second call does nothing."""
        handle, self._handle = self._handle, c.c_void_p()
        native.lib.zelc_analyser_free(handle)

    def _on_raised(self, _user, kind: int, start: float, noticed: float) -> None:
        self._found.append(Raised(KINDS[kind].name, start, noticed))

    def _on_cleared(self, _user, event) -> None:
        own = event.contents
        if own.counts:
            evidence = (own.value, own.limit) if own.has_evidence else (None, None)
            self._found.append(Event(KINDS[own.kind].name, own.start_s, own.end_s, own.share, own.is_open_at_end != 0,
                                     *evidence))

    def _take(self) -> List[Union[Raised, Event]]:
        found, self._found = self._found, []
        return found

    def _open(self) -> c.c_void_p:
        if not self._handle:
            raise native.EndedError("the analyser is closed")
        return self._handle

    def __enter__(self) -> Analyser:
        return self

    def __exit__(self, *_exception) -> None:
        self.close()

    def __del__(self) -> None:
        if getattr(self, "_handle", None):
            self.close()


def unwrapped(stamp: float, expected: float, period: float) -> float:
    """Timestamps of few bits begin again at zero every `period` seconds: `stamp` where it is nearest to `expected`."""
    return native.lib.zelc_unwrapped(stamp, expected, period)


def events(items: Iterable[Union[VideoFrame, AudioFrame]], *, declared: Optional[float] = None,
           **options) -> Iterator[Event]:
    """The events of a stream, each when it is over. `options` are those of `Analyser`."""
    with Analyser(**options) as analyser:
        for item in items:
            yield from (found for found in analyser.feed(item) if isinstance(found, Event))
        yield from (found for found in analyser.end(declared) if isinstance(found, Event))

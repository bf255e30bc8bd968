"""Time-stamped frames in, events out."""

from __future__ import annotations

import ctypes as c
import math
from dataclasses import dataclass
from typing import Iterable, Iterator, List, Mapping, Optional, Tuple, Union

from . import _fed as fed
from . import _native as native


@dataclass(frozen=True)
class Kind:
    """What can be wrong over a stretch of a stream."""

    name: str
    source: str  #: "video", "audio" or "timestamps"
    is_look: bool  #: it may be as it was meant to be, as a night scene; otherwise it is wrong in any stream
    unit: str  #: what is measured
    meaning: str
    min: float  #: the default rule: seconds that it lasts at least
    gap: float  #: seconds without it that end an event


def _kind(number: int) -> Kind:
    info = native.Kind()
    native.lib.zelc_kind_info(number, c.byref(info))
    return Kind(info.name.decode(), ("video", "audio", "timestamps")[info.source], info.is_look != 0,
                info.unit.decode(), info.meaning.decode(), info.min_s, info.gap_s)


KINDS: Tuple[Kind, ...] = tuple(_kind(number) for number in range(native.lib.zelc_kind_count()))
"""In the order of reports."""

_NUMBERS = {kind.name: number for number, kind in enumerate(KINDS)}


@dataclass(frozen=True)
class Raised:
    """A fault has lasted its minimum: it began at `start`, and that was known when the stream was at `noticed`."""

    kind: str
    start: float
    noticed: float


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


@dataclass(frozen=True)
class VideoFrame:
    data: fed.FrameData
    time: float  #: seconds
    duration: float = 0.0  #: seconds; 0 if it is not known
    pixel_format: str = "i420"


@dataclass(frozen=True)
class AudioFrame:
    samples: fed.Buffer
    sample_rate: int
    time: float  #: seconds
    channels: Optional[int] = None  #: of flat samples; 1 if it is not given


class Analyser:
    """Finds the events of one stream, live or from a file; one thread at a time.

    `rules` gives the shortest event and the gap that ends one, both in seconds, per kind: {"freeze": (5, 0.1)}. For live
    streams `late_after` is how many seconds a track may fall behind the other before it stalls.
    """

    def __init__(self, *, video: bool = True, audio: bool = True, is_still: bool = False,
                 late_after: Optional[float] = None,
                 rules: Optional[Mapping[str, Tuple[float, float]]] = None) -> None:
        self._handle = c.c_void_p()
        self._found: List[Union[Raised, Event]] = []
        self._callbacks = native.AnalyserCallbacks()
        self._callbacks.on_raised = native.ON_RAISED(self._on_raised)
        self._callbacks.on_cleared = native.ON_CLEARED(self._on_cleared)
        options = native.AnalyserOptions(has_video=video, has_audio=audio, is_still=is_still,
                                         late_after_s=-1.0 if late_after is None else late_after)
        native.lib.zelc_analyser_new(c.byref(options), c.byref(self._callbacks), c.byref(self._handle))
        for kind, (shortest, gap) in (rules or {}).items():
            self.set_rule(kind, shortest, gap)

    def video(self, frame: fed.FrameData, time: float, duration: float = 0.0,
              pixel_format: str = "i420") -> List[Union[Raised, Event]]:
        """Takes the next frame, shown from `time` on; what was raised and cleared by it."""
        with native.Borrowed() as borrowed:
            native.lib.zelc_analyser_video(self._open(), c.byref(fed.frame(frame, pixel_format, borrowed)), time,
                                           duration)
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
            return self.video(item.data, item.time, item.duration, item.pixel_format)
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


def events(items: Iterable[Union[VideoFrame, AudioFrame]], *, declared: Optional[float] = None,
           **options) -> Iterator[Event]:
    """The events of a stream, each when it is over. `options` are those of `Analyser`."""
    with Analyser(**options) as analyser:
        for item in items:
            yield from (found for found in analyser.feed(item) if isinstance(found, Event))
        yield from (found for found in analyser.end(declared) if isinstance(found, Event))

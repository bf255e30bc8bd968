"""Quality of video and audio streams: black, frozen and blocky frames, silence, clipping and more.

Three ways in, from the plainest on:

- `Detector`: a frame or audio in, verdicts out;
- `Stream`: feeds copy and return, verdicts and reports come by callback from other threads;
- `Analyser`, and the iterator `events`: time-stamped frames in, events out.

Frames are 8-bit YUV 4:2:0 in limited range: one array of height * 3 / 2 rows (as PyAV's `to_ndarray("yuv420p")` and
OpenCV's `COLOR_BGR2YUV_I420` give it), or a tuple of planes, from NumPy or anything else with a buffer; nothing is copied.
Audio is interleaved signed 16-bit samples.
"""

from ._native import BusyError, EndedError
from .analysis import KINDS, Analyser, AudioFrame, Event, Gap, Kind, Raised, Source, Tier, VideoFrame, events, unwrapped
from .detection import AudioVerdict, Config, Detector, Exposure, Screen, VideoVerdict
from .log import set_log
from .streaming import Stream

__all__ = ["KINDS", "Analyser", "AudioFrame", "AudioVerdict", "BusyError", "Config", "Detector", "EndedError", "Event",
           "Exposure", "Gap", "Kind", "Raised", "Screen", "Source", "Stream", "Tier", "VideoFrame", "VideoVerdict", "events",
           "set_log", "unwrapped"]
__version__ = "1.0.0"

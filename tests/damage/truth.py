"""What comes out of a file, found without zel-monitor: the numbers that its frames show, and its samples."""
import dataclasses
import pathlib
import subprocess
import tempfile

import sources

_CELLS = sources.CELLS
_ROWS = sources.HEIGHT // 8  # each cell of what is read is the mean of eight rows
_FRAME = _CELLS * _ROWS
_BANDS = sources.HEIGHT // sources.BAND
_LEAST_CONTRAST = 40


@dataclasses.dataclass(frozen=True)
class Content:
    frames: int
    numbers: frozenset  # that they show
    samples: int  # of all channels


@dataclasses.dataclass(frozen=True)
class Loss:
    """Shares of what the intact file has, 0 to 1."""
    frames: float
    samples: float
    spoiled: float  # frames in whose place others came out, or unrecognisable ones

    @property
    def most(self):
        return max(self.frames, self.samples)


def content(path):
    """Decodes what ffmpeg can."""
    with tempfile.TemporaryDirectory(prefix="zel-damage-") as scratch:
        frames, samples = pathlib.Path(scratch, "frames"), pathlib.Path(scratch, "samples")
        command = ["ffmpeg", "-nostdin", "-v", "quiet", "-y", "-threads", "1", "-i", str(path)]
        pictures = ["-map", "0:v:0", "-fps_mode", "passthrough",
                    "-vf", f"scale={_CELLS}:{_ROWS}:flags=area,format=gray", "-f", "rawvideo", str(frames)]
        sound = ["-map", "0:a:0", "-f", "s16le", str(samples)]
        # It does nothing at all where one of the two is missing.
        if not _run(command + pictures + sound):
            _run(command + pictures)
            _run(command + sound)
        shown = frames.read_bytes() if frames.exists() else b""
        heard = samples.stat().st_size // 2 if samples.exists() else 0
    read = [_number(shown[at:at + _FRAME]) for at in range(0, len(shown) - _FRAME + 1, _FRAME)]
    return Content(len(read), frozenset(n for n in read if n is not None), heard)


def loss(intact, damaged):
    def missing(part, whole):
        return max(0.0, 1 - part / whole) if whole else 0.0
    frames = missing(damaged.frames, intact.frames)
    recognised = missing(len(damaged.numbers & intact.numbers), intact.frames)
    return Loss(frames, missing(damaged.samples, intact.samples), max(0.0, recognised - frames))


def _run(words):
    try:
        return subprocess.run(words, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=60).returncode == 0
    except subprocess.TimeoutExpired:
        return False


def _number(cells):
    """What at least two of the three bands agree on; None if they do not."""
    read = []
    for band in range(_BANDS):
        upper = band * (_ROWS // _BANDS) * _CELLS
        both = [cells[upper + i] + cells[upper + _CELLS + i] for i in range(_CELLS)]
        steps = [both[i] - both[i + 8] for i in range(8)]
        if all(abs(step) >= 2 * _LEAST_CONTRAST for step in steps):
            read.append(sum(1 << i for i, step in enumerate(steps) if step > 0))
    return next((n for n in read if read.count(n) * 2 > _BANDS), None)

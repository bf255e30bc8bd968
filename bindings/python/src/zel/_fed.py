"""From arrays, bytes and whatever else has a buffer to the structs of libzel-c, without a copy."""

from __future__ import annotations

from typing import Any, Optional, Sequence, Union

from . import _native as native

Buffer = Any
"""A NumPy array, bytes, a memoryview: any object with the buffer protocol."""

FrameData = Union[Buffer, Sequence[Buffer]]

_FORMATS = {"i420": 0, "nv12": 1}


def _plane(view: native.View, name: str) -> tuple[int, int, int, int]:
    """(address, stride, width in bytes, rows) of a two-dimensional array of bytes."""
    if view.itemsize != 1:
        raise TypeError(f"{name} must have 8-bit samples, these have {8 * view.itemsize} bits")
    if view.ndim != 2 or view.strides[1] != 1 or view.strides[0] < 0:
        raise ValueError(f"{name} must be an array of rows whose bytes lie side by side")
    return view.buf, view.strides[0], view.shape[1], view.shape[0]


def frame(data: FrameData, pixel_format: str, borrowed: native.Borrowed) -> native.Frame:
    if pixel_format not in _FORMATS:
        raise ValueError(f"no such pixel format: {pixel_format!r}; there are {', '.join(_FORMATS)}")
    nv12 = pixel_format == "nv12"
    own = native.Frame(format=_FORMATS[pixel_format])
    if isinstance(data, (tuple, list)):
        if len(data) != (2 if nv12 else 3):
            raise ValueError(f"{pixel_format} has {2 if nv12 else 3} planes, not {len(data)}")
        planes = [_plane(borrowed.view(part), "a plane") for part in data]
        own.width, own.height = planes[0][2], planes[0][3]
        for index, (address, stride, width, rows) in enumerate(planes):
            expected = (own.width, own.height) if index == 0 else (own.width // (1 if nv12 else 2), own.height // 2)
            if (width, rows) != expected:
                raise ValueError(f"plane {index} is {width} x {rows} bytes, not {expected[0]} x {expected[1]}")
            own.data[index], own.stride[index] = address, stride
        return own
    address, stride, width, rows = _plane(borrowed.view(data), "a packed frame")
    if rows % 3 != 0 or width % 2 != 0 or (stride != width and not nv12):
        raise ValueError("a packed frame is one array of height * 3 / 2 rows of width bytes without gaps")
    own.width, own.height = width, rows * 2 // 3
    own.data[0], own.stride[0] = address, stride
    own.data[1] = address + stride * own.height
    if nv12:
        own.stride[1] = stride
    else:
        own.data[2] = own.data[1] + (width // 2) * (own.height // 2)
        own.stride[1] = own.stride[2] = width // 2
    return own


def audio(data: Buffer, sample_rate: int, channels: Optional[int], borrowed: native.Borrowed) -> native.Audio:
    view = borrowed.view(data)
    if view.itemsize != 2 or (view.format or b"B").lstrip(b"<=@") != b"h":
        raise TypeError("audio must be signed 16-bit samples; for NumPy floats: (samples * 32767).astype('int16')")
    distance = 2
    for axis in range(view.ndim - 1, -1, -1):
        if view.shape[axis] > 1 and view.strides[axis] != distance:
            raise ValueError("audio must be interleaved, its samples side by side (numpy.ascontiguousarray)")
        distance *= view.shape[axis]
    if channels is None:
        channels = view.shape[1] if view.ndim == 2 else 1
    if channels < 1 or view.len // 2 % channels != 0:
        raise ValueError(f"{view.len // 2} samples are not a whole number of {channels} channels")
    if not 0 < sample_rate < 1 << 31:
        raise ValueError("the sample rate must be above 0 Hz")
    return native.Audio(sample_rate=sample_rate, channels=channels, samples=view.len // 2 // channels, data=view.buf)

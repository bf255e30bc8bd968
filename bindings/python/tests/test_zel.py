"""The Python package over the library that ZEL_LIBRARY names."""

import ctypes
import threading

import numpy as np
import pytest

import zel
from zel import _native as native

WIDTH, HEIGHT, RATE = 64, 48, 48000


def packed(luma, chroma=128):
    frame = np.full((HEIGHT * 3 // 2, WIDTH), chroma, np.uint8)
    frame[:HEIGHT] = luma
    return frame


def noise(seed=1):
    return np.random.default_rng(seed).integers(0, 255, (HEIGHT, WIDTH), np.uint8)


@pytest.fixture(autouse=True)
def quiet():
    lines = []
    zel.set_log(lines.append)
    yield lines
    zel.set_log(None)


def test_all_shapes_of_a_frame_are_the_same_frame():
    planes = (np.full((HEIGHT, WIDTH + 32), 16, np.uint8)[:, :WIDTH], *[np.full((HEIGHT // 2, WIDTH // 2), 128, np.uint8)] * 2)
    in_turn = (planes[0], np.full((HEIGHT // 2, WIDTH), 128, np.uint8))
    flat = memoryview(bytes(packed(16))).cast("B", (HEIGHT * 3 // 2, WIDTH))
    with zel.Detector() as detector:
        for frame, pixel_format in [(packed(16), "i420"), (packed(16), "nv12"), (planes, "i420"), (in_turn, "nv12"),
                                    (flat, "i420")]:
            assert detector.video(frame, pixel_format).screen == zel.Screen.BLACK
        assert detector.video(packed(noise())).screen == zel.Screen.NORMAL
        assert detector.video(packed(0, chroma=0)).screen == zel.Screen.GREEN


@pytest.mark.parametrize("frame, error", [
    (np.zeros((72, 64), np.int16), TypeError), (np.zeros(64, np.uint8), ValueError), ("text", TypeError),
    (np.zeros((72, 64, 3), np.uint8), ValueError), (np.zeros((71, 64), np.uint8), ValueError),
    ((packed(0), packed(0)), ValueError), (np.zeros((72, 64), np.uint8)[:, ::2], ValueError),
    ((noise(), noise(), noise()), ValueError)])
def test_what_is_no_frame_is_refused(frame, error):
    with zel.Detector() as detector, pytest.raises(error):
        detector.video(frame)


def test_audio_is_judged_by_the_period():
    tone = (3000 * np.sin(np.arange(RATE) / 20)).astype(np.int16)
    with zel.Detector(zel.Config(audio_period=0.5)) as detector:
        assert detector.audio(tone[: RATE // 4], RATE) is None
        verdict = detector.audio(np.repeat(tone[: RATE // 4, None], 2, axis=1), RATE)
        assert not verdict.mute and 1500 < verdict.level < 2200
        assert detector.audio(tone.reshape(1, -1), RATE, channels=2) is not None
        with pytest.raises(TypeError):
            detector.audio(tone / 32768, RATE)
        with pytest.raises(ValueError):
            detector.audio(tone[::2], RATE)
        with pytest.raises(ValueError):
            detector.audio(tone[:3], RATE, channels=2)


def test_a_stream_calls_back_and_is_silent_once_closed():
    seen, reports, all_seen = {}, [], threading.Event()

    def on_video(index, verdict):
        seen[index] = verdict
        if len(seen) == 3:
            all_seen.set()

    with zel.Stream(on_video=on_video, on_report=lambda fields, is_final: reports.append((fields, is_final))) as stream:
        for index in (7, 8, 9):
            stream.video(packed(16), index)
        assert all_seen.wait(30)
        assert stream.drops == (0, 0)
    assert sorted(seen) == [7, 8, 9] and all(verdict.screen == zel.Screen.BLACK for verdict in seen.values())
    (fields, is_final), = reports
    assert is_final and fields["zel_vframes"] == "3"
    with pytest.raises(zel.EndedError):
        stream.video(packed(16))


def test_events_are_raised_and_cleared():
    items = [zel.VideoFrame(packed(16 if 25 <= n < 75 else noise(n)), 5 + n / 25, 1 / 25) for n in range(100)]
    event, = zel.events(items, audio=False, rules={"black": (0.3, 0.1)})
    assert event.kind == event.info.name == "black" and event.value > event.limit
    assert (event.start, event.end) == (pytest.approx(6, abs=0.05), pytest.approx(8, abs=0.05))
    with zel.Analyser(audio=False) as analyser:
        found = [what for item in items for what in analyser.feed(item)] + analyser.end()
        assert [type(what).__name__ for what in found] == ["Raised", "Event"]
        assert found[0].noticed - found[0].start < 1.5
        with pytest.raises(zel.EndedError):
            analyser.feed(items[0])
    seen, gaps, suspected, periods = [], [], [], []
    with zel.Analyser(rules={"stall": (1, 0.1)}, on_frame=lambda *frame: seen.append(frame), on_gap=gaps.append,
                      on_suspected=suspected.append, on_silence_period=lambda *period: periods.append(period)) as analyser:
        for item in items:
            analyser.feed(item)
        analyser.audio(np.zeros(4800, np.int16), RATE, 5)
        analyser.end()
    assert len(seen) == 100 and seen[30][0] == 30 and seen[30][2].screen == zel.Screen.BLACK
    assert "black" in suspected and gaps[0].track == zel.Source.AUDIO and periods[0][2].mute
    with pytest.raises(ValueError, match="there are black"):
        zel.Analyser(rules={"snow": (1, 1)})


def test_kinds_and_log_are_the_library_s_own(quiet):
    defaults = native.Config()
    native.lib.zelc_config_default(ctypes.byref(defaults))
    version = native.lib.zelc_version()
    assert zel.__version__ == f"{version >> 16}.{version >> 8 & 255}.{version & 255}"
    kinds = {kind.name: kind for kind in zel.KINDS}
    assert zel.KINDS[0].name == "black" and kinds["black"].tier == zel.Tier.FAULT and kinds["damage"].source == zel.Source.INPUT
    assert kinds["no-voice"].tier == zel.Tier.LOOK and kinds["mute"].colour.startswith("#")
    assert zel.Config.of_analyser().freeze_frames == 1 and bytes(zel.Config().native()) == bytes(defaults)
    zel.Stream().close()
    with zel.Detector() as detector:
        for _ in range(12):
            detector.video(packed(noise()))
    assert any("Staticframe" in line for line in quiet)

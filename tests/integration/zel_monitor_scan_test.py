#!/usr/bin/python3
"""Walks `zel-monitor scan` through inputs of every sort, its outputs and its exit statuses."""
import base64
import contextlib
import csv
import fcntl
import io
import json
import os
import pty
import re
import signal
import subprocess
import termios
import time
import unittest

from zel_monitor_scan_support import BLACK, MOVING, PROGRAM, SCHEMA_FILE, ScanTest, run, validate

# 2 s of moving video, 2 s of black, 2 s moving again.
FAULTY = "testsrc=s=320x240:r=25:d=6,hue=h=360*t,drawbox=t=fill:c=black:enable='between(t,2,3.99)'"
BLACK_EVENT = ("black", 2.0, 4.0)


class Inputs(ScanTest):
    """Every sort of input ends with a right answer or a clear error."""

    def assert_refused(self, path, *words):
        """The input cannot be analysed: status 3, with a reason, and never a pass."""
        report = self.scan_one(path, "--fail-on", "black", status=3)
        self.assertFalse(report["complete"])
        self.assertEqual(report["verdict"], "incomplete")
        for word in words:
            self.assertIn(word, report["problem"])
        return report

    def test_pixel_formats_sizes_and_scans(self):
        for name, arguments in {
            "plain.mkv": "-c:v mpeg4",
            "ten_bit.mkv": "-pix_fmt yuv420p10le -c:v ffv1",
            "nv12.nut": "-pix_fmt nv12 -c:v rawvideo",
            "interlaced.mpg": "-c:v mpeg2video -flags +ilme+ildct -top 1",
            "odd.mkv": "-vf scale=321:241 -c:v ffv1",
            "tiny.mkv": "-vf scale=18:16 -c:v ffv1",
            "full_range.mkv": "-pix_fmt yuvj420p -c:v ffv1",
            "video_only.ts": "-c:v mpeg2video -muxdelay 0 -muxpreload 0",
        }.items():
            with self.subTest(name):
                report = self.scan_one(self.clip_of(name, FAULTY, arguments))
                self.assert_events(report, BLACK_EVENT)
                self.assertIsNone(report["stream"]["audio"])
                self.assertEqual(report["stream"]["damaged"], 0)

    def test_display_rotation_changes_nothing(self):
        plain = self.clip_of("plain.mp4", FAULTY, "-c:v mpeg4")
        turned = self.clip("turned.mp4", "-i", str(plain), "-c copy -metadata:s:v:0 rotate=90")
        self.assertEqual(self.scan_one(turned)["events"], self.scan_one(plain)["events"])

    def test_changing_resolution(self):
        small = self.clip_of("small.ts", "testsrc=s=160x120:r=25:d=2,hue=h=360*t", "-c:v mpeg2video")
        black = self.clip_of("black.ts", f"{BLACK}:d=2", "-c:v mpeg2video")
        both = self.folder / "both.ts"
        both.write_bytes(small.read_bytes() + black.read_bytes())
        report = self.scan_one(both)
        self.assert_events(report, ("black", 2.0, 4.0), within=0.2)
        self.assertGreaterEqual(report["stream"]["video"]["frames"], 99)  # FFmpeg may lose one at the seam

    def test_audio_only(self):
        sound = self.clip("sound.wav", "-f lavfi -i", "aevalsrc=sin(2800*t)*(lt(t\\,2)+gte(t\\,4)):s=44100:d=6")
        report = self.scan_one(sound)
        self.assert_events(report, ("mute", 2.0, 4.0), within=0.11)
        self.assertIsNone(report["stream"]["video"])

    def test_picture(self):
        self.assert_events(self.scan_one(self.clip_of("black.png", BLACK, "-frames:v 1")), ("black", 0.0, 0.04))
        self.assertEqual(self.scan_one(self.clip_of("good.png", MOVING, "-frames:v 1"))["events"], [])

    def test_missing_timestamps(self):
        raw = self.clip_of("raw.h264", FAULTY, "-c:v libx264 -preset ultrafast -bf 0")
        self.assert_events(self.scan_one(raw), BLACK_EVENT)

    def test_gap_in_the_timestamps(self):
        gap = self.clip_of("gap.mkv", f"{MOVING},trim=duration=4,setpts=PTS+gte(T\\,2)*3/TB", "-fps_mode passthrough -c:v mpeg4")
        self.assert_events(self.scan_one(gap), ("stall", 2.0, 5.0))
        self.assertEqual(self.scan_one(gap, "--stall", "4s")["totals"]["stall"]["events"], 0)

    def test_pipe(self):
        clip = self.clip_of("clip.ts", FAULTY, "-c:v mpeg2video")
        with clip.open("rb") as stream:
            self.assert_events(self.scan_one("-", stdin=stream), BLACK_EVENT)
        named = self.folder / "named"
        os.mkfifo(named)
        with subprocess.Popen(["cp", clip, named]):
            self.assert_events(self.scan_one(named), BLACK_EVENT)

        sound = self.clip("sound.wav", "-f lavfi -i sine=440:d=2").read_bytes()
        self.assertTrue(self.scan_one("-", input=sound)["complete"])
        self.assertIn("cut off", self.scan_one("-", input=sound[:100_001], status=3)["problem"])

    def test_truncated_file(self):
        whole = self.clip_of("whole.mp4", FAULTY, "-c:v mpeg4 -movflags +faststart")
        cut = self.folder / "cut.mp4"
        cut.write_bytes(whole.read_bytes()[: whole.stat().st_size * 3 // 4])
        report = self.assert_refused(cut, "before its declared end")
        self.assertEqual(report["events"][-1]["kind"], "short")
        self.assertAlmostEqual(report["events"][-1]["end_s"], 6.0, delta=0.05)
        no_index = self.folder / "no_index.mp4"
        no_index.write_bytes(self.clip_of("late.mp4", FAULTY, "-c:v mpeg4").read_bytes()[:20000])
        self.assert_refused(no_index, "cut off: its index is missing")

        report = self.scan_one(cut, "--min", "short=1h", "--fail-on", "black=1h", status=3)
        self.assertEqual((report["verdict"], report["totals"]["short"]["events"]), ("incomplete", 0))

    def test_whole_files_that_declare_more_than_is_scanned(self):
        subtitles = self.folder / "late.srt"
        subtitles.write_text("1\n00:00:01,000 --> 00:00:20,000\nNothing to see\n")
        tones = "-f lavfi -i sine=440:d=6 -f lavfi -i sine=880:d=12 -map 0 -map 1 -map 2"
        for name, arguments in {
            "offset.mkv": "-c:v mpeg4 -output_ts_offset 30",
            "offset.webm": "-c:v vp8 -output_ts_offset 30",
            "subtitles.mkv": f"-i {subtitles} -c:v mpeg4",
            "subtitles.mp4": f"-i {subtitles} -c:v mpeg4 -c:s mov_text",
            "two_tracks.mp4": f"{tones} -c:v mpeg4 -c:a aac -disposition:a:0 default -disposition:a:1 0",
        }.items():
            with self.subTest(name):
                report = self.scan_one(self.clip_of(name, FAULTY, arguments), "--fail-on", "short")
                self.assert_events(report, BLACK_EVENT)
                self.assertAlmostEqual(report["totals"]["black"]["share"], 1 / 3, delta=0.02)

    def test_long_last_frame(self):
        report = self.scan_one(self.clip_of("last.gif", f"{MOVING},trim=duration=2", "-final_delay 300"))
        self.assertEqual(report["totals"]["short"]["events"], 0)
        self.assertAlmostEqual(report["stream"]["analysed_duration_s"], 5.0, delta=0.1)

    def test_track_that_is_missing_for_a_while(self):
        video = f"{MOVING},trim=duration=4"
        tone = "-f lavfi -i sine=440:d=10 -c:v mpeg4 -c:a pcm_s16le"
        for name, graph, arguments, expected in (
            ("ends.mkv", video, tone, ("stall", 4.0, 10.0)),
            ("begins.mkv", video, f"{tone} -vf setpts=PTS+6/TB -fps_mode passthrough", ("stall", 0.0, 6.0)),
            ("both.mkv", f"{MOVING},trim=duration=6,setpts=PTS+gte(T\\,2)*3/TB",
             f"{tone} -af aselect=not(between(t\\,2.1\\,5.4)) -fps_mode passthrough -shortest", ("stall", 2.0, 5.4)),
        ):
            with self.subTest(name):
                report = self.scan_one(self.clip_of(name, graph, arguments), "--fail-on", "stall=3s", status=1)
                self.assert_events(report, expected, within=0.1)

    def test_frames_that_are_lost_beside_sound(self):
        for name, damage, status in (
            ("one.mkv", "-c:v libx264 -bf 0 -bsf:v noise=drop='gt(n\\,0)'", 1),
            ("rubbish.mkv", "-c:v mpeg4 -bsf:v noise=amount=1", 3),
            ("empty.mkv", "-c:v libx264 -bsf:v noise=drop=1", 3),
        ):
            with self.subTest(name):
                clip = self.clip_of(name, f"{MOVING},trim=duration=4", "-f lavfi -i sine=440:d=4 -c:a pcm_s16le", damage)
                report = self.scan_one(clip, "--fail-on", "stall=1s", status=status)
                self.assert_events(report, ("stall", 0.0, 4.0), within=0.1)
                self.assertEqual(report["problem"], "none of its frames could be decoded" if status == 3 else None)
        song = self.clip_of("song.mkv", f"{MOVING},trim=end_frame=1", "-f lavfi -i sine=440:d=4 -c:v png -c:a pcm_s16le")
        self.assertEqual(self.scan_one(song)["totals"]["stall"]["events"], 0)

    def test_broadcast_that_goes_on_under_other_identifiers(self):
        films = (self.clip_of("film.ts", f"{MOVING},trim=duration=6", "-f lavfi -i sine=440:d=6 -c:v mpeg2video -c:a mp2"),
                 self.clip_of("dead.ts", f"{BLACK}:d=6", "-f lavfi -i anullsrc -t 6 -c:v mpeg2video -c:a ac3",
                              "-mpegts_start_pid 512"))
        both = self.folder / "changed.ts"
        both.write_bytes(b"".join(film.read_bytes() for film in films))
        report = self.scan_one(both, "--fail-on", "black=2s", status=1)
        self.assert_events(report, ("black", 6.0, 12.0), within=0.2)
        self.assert_events(report, ("mute", 6.0, 12.0), within=0.2)
        self.assertEqual(report["totals"]["stall"]["events"], 0)

    def test_joined_streams_with_tracks_of_unequal_length(self):
        for name, sound_s in (("longer.ts", 2.3), ("shorter.ts", 1.7)):
            with self.subTest(name):
                part = self.clip_of(name, f"{MOVING},trim=duration=2", f"-f lavfi -i sine=d={sound_s} -c:v mpeg2video -c:a mp2")
                joined = self.folder / f"joined_{name}"
                joined.write_bytes(part.read_bytes() * 8)
                report = self.scan_one(joined)
                self.assertEqual(report["totals"]["stall"]["events"], 0)
                self.assertAlmostEqual(report["stream"]["analysed_duration_s"], 8 * max(sound_s, 2.0), delta=0.6)


class Outputs(ScanTest):
    """Formats, files, policy, progress and exit statuses."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.faulty = cls.clip_of("faulty.mkv", FAULTY, "-c:v mpeg4")

    def test_table_names_the_event(self):
        done = run("scan", "-q", self.faulty)
        self.assertEqual(done.returncode, 0)
        self.assertEqual(done.stderr, b"")
        self.assertIn("black              1       2.000   33.3%       2.000  0:00:02.000", done.stdout.decode())

    def test_json_lines_and_csv_hold_the_same_events_and_the_status_of_every_input(self):
        missing = str(self.folder / "missing")
        inputs = self.scan(self.faulty, missing, "--fail-on", "black", status=3)["inputs"]
        statuses = [(p["input"], p["complete"], p["problem"], p["verdict"]) for p in inputs]
        events = inputs[0]["events"]
        command = ("scan", "-q", self.faulty, missing, "--fail-on", "black")
        lines = [json.loads(line) for line in run(*command, "--jsonl").stdout.splitlines()]
        for line in lines:
            validate(line, "status_line" if line["kind"] == "status" else "event_line")
        told = [line for line in lines if line["kind"] == "status"]
        self.assertEqual([(t["input"], t["complete"], t["problem"], t["verdict"]) for t in told], statuses)
        found = [line for line in lines if line["kind"] != "status"]
        self.assertEqual({line.pop("input") for line in found}, {str(self.faulty)})
        self.assertTrue(events)
        self.assertCountEqual(found, events)

        rows = list(csv.DictReader(io.StringIO(run(*command, "--csv").stdout.decode())))
        told = [row for row in rows if row["kind"] == "status"]
        self.assertEqual([(t["input"], t["complete"] == "true", t["problem"] or None, t["verdict"]) for t in told], statuses)
        rows = [row for row in rows if row["kind"] != "status"]
        self.assertEqual([(r["kind"], float(r["start_s"])) for r in rows], [(e["kind"], e["start_s"]) for e in found])

    def test_schema_of_the_report_is_the_documented_one(self):
        done = run("scan", "--schema")
        self.assertEqual(done.returncode, 0)
        self.assertEqual(done.stdout, SCHEMA_FILE.read_bytes(), "write it anew: zel-monitor scan --schema")

    def test_beside_a_file_only_verdicts_go_to_standard_output(self):
        missing = str(self.folder / "missing")
        for name, form in (("table", []), ("json", ["--json"]), ("csv", ["--csv"])):
            with self.subTest(name):
                target = self.folder / f"only.{name}"
                command = ("scan", self.faulty, missing, *form, "-o", target, "-y")
                done = run(*command, "--fail-on", "black=2s")
                self.assertEqual(
                    done.stdout.decode().splitlines(),
                    [f"{self.faulty}: FAIL: black for 2.000 s at 0:00:02.000 (limit 2 s)",
                     f"{missing}: INCOMPLETE, no pass: No such file or directory"],
                )
                self.assertEqual(run(*command).stdout, b"")
                quiet = run(*command, "-q", "--fail-on", "black=2s")
                self.assertEqual((quiet.stdout, quiet.returncode), (b"", 3))
                self.assertEqual(quiet.stderr.decode(), f"{missing}: No such file or directory\n")

    def test_reason_is_on_standard_error_also_beside_a_table(self):
        done = run("scan", "-q", self.folder / "missing")
        self.assertIn(b"NOT ANALYSED TO ITS END: No such file", done.stdout)
        self.assertEqual(done.stderr.decode(), f"{self.folder}/missing: No such file or directory\n")

    def test_policy_decides_pass_and_fail(self):
        good = self.clip_of("good.mkv", f"{MOVING},trim=duration=2", "-c:v mpeg4")
        failed = run("scan", "-q", good, self.faulty, "--fail-on", "black=2s,freeze=1h")
        self.assertEqual(failed.returncode, 1)
        self.assertIn("PASS", failed.stdout.decode())
        self.assertIn("FAIL: black for 2.000 s at 0:00:02.000 (limit 2 s)", failed.stdout.decode())
        report = self.scan(good, self.faulty, "-j", "2", "--fail-on", "black=2100ms")
        self.assertEqual([part["verdict"] for part in report["inputs"]], ["pass", "pass"])
        report = self.scan(self.faulty, self.folder / "missing", "--fail-on", "black", status=3)
        self.assertEqual([part["verdict"] for part in report["inputs"]], ["fail", "incomplete"])

    def test_looks_are_reported_to_who_asks(self):
        dim = self.clip_of("dim.mkv", f"{MOVING},trim=duration=3,lutyuv=y=24+val/12:u=128:v=128", "-c:v ffv1")
        report = self.scan(dim)
        self.assertEqual(report["inputs"][0]["events"], [])
        self.assertIsNone(report["inputs"][0]["totals"]["underexposed"])
        self.assertNotIn("underexposed", report["settings"]["kinds"])
        for asked in (["--also", "no-voice,underexposed"], ["--min", "underexposed=1s"], ["--gap", "underexposed=1s"], ["--all"]):
            with self.subTest(asked):
                self.assert_events(self.scan_one(dim, *asked), ("underexposed", 0.0, 3.0))
        (event,) = self.scan_one(dim, "--fail-on", "underexposed=1s", status=1)["events"]
        self.assertEqual(event["kind"], "underexposed")
        self.assertLess(event["evidence"]["value"], event["evidence"]["limit"])
        self.assertEqual(run("scan", dim, "--also", "dim").returncode, 2)
        lines = run("scan", "--list-detectors").stdout.decode().splitlines()
        self.assertLessEqual(max(map(len, lines)), 80)
        tiers = dict(line.split()[:2] for line in lines if line[:1].strip() and " fault " in line or " look " in line)
        self.assertEqual((tiers["freeze"], tiers["clipping"], tiers["no-voice"]), ("fault", "fault", "look"))

    def test_loudness(self):
        tone = self.clip("tone.wav", "-f lavfi -i", "aevalsrc='pow(10,-1.15)*sin(2000*PI*t)|pow(10,-1.15)*sin(2000*PI*t)':s=48000:d=5")
        loudness = self.scan_one(tone)["loudness"]
        self.assertAlmostEqual(loudness["integrated_lufs"], -23.0, delta=0.1)
        self.assertIn("loudness -23.0 LUFS, short-term at most -23.0 LUFS", run("scan", "-q", tone).stdout.decode())
        silent = self.clip("silent.wav", "-f lavfi -i anullsrc -t 4")
        self.assertEqual(set(self.scan_one(silent)["loudness"].values()), {None})
        self.assertIn("loudness none", run("scan", "-q", silent).stdout.decode())
        self.assertIsNone(self.scan_one(self.faulty)["loudness"])

    def test_limit_holds_however_times_are_rounded(self):
        graph = f"{MOVING},trim=duration=4,drawbox=t=fill:c=black:enable='between(n,8,57)'"
        clip = self.clip_of("fifty.mkv", graph, "-c:v mpeg4")
        self.assertEqual(self.scan_one(clip, "--fail-on", "black=2s", status=1)["verdict"], "fail")

    def test_limit_finds_events_that_are_shorter_than_the_default(self):
        graph = f"{MOVING},trim=duration=4,drawbox=t=fill:c=black:enable='between(n,25,33)'"
        clip = self.clip_of("blink.mkv", graph, "-c:v mpeg4")
        report = self.scan(clip, "--fail-on", "black=0.1s,freeze=9s", status=1)
        self.assert_events(report["inputs"][0], ("black", 1.0, 1.36))
        rules = report["settings"]["rules"]
        self.assertEqual((rules["black"]["min_s"], rules["freeze"]["min_s"]), (0.1, 2.0))
        self.assertEqual(self.scan_one(clip, "--fail-on", "black=0.4s")["verdict"], "pass")
        by_the_rules = self.scan_one(clip, "--fail-on", "black")
        self.assertEqual((by_the_rules["verdict"], by_the_rules["totals"]["black"]["events"]), ("pass", 0))
        self.assertEqual(self.scan_one(clip, "--fail-on", "black", "--min", "black=0.2s", status=1)["verdict"], "fail")
        for contradiction in (["--min", "black=1s"], ["--min", "black=1s,mute=2s"], ["--stall", "1s", "--fail-on", "stall=0.5s"]):
            done = run("scan", clip, "--fail-on", "black=0.1s", *contradiction)
            self.assertEqual(done.returncode, 2)
            self.assertRegex(done.stderr.decode(), "--fail-on: black=0.1s is shorter than .*--min black=1s|stall=0.5s.*stall=1s")

    def test_page_shows_the_frame_at_the_start_of_an_event_or_none(self):
        brighter = "color=s=160x120:r=25:d=12,geq=lum=40+15*T:cb=128:cr=128"
        sound = "aevalsrc=sin(2800*t)*not(between(t\\,2\\,4)):s=48000:d=5"  # ends early: noticed at the very end
        clip = self.clip("brighter.mkv", "-f lavfi -i", brighter, "-f lavfi -i", sound, "-c:v ffv1 -c:a pcm_s16le")
        page = self.folder / "brighter.html"
        events = self.scan_one(clip, "--html", page, "--min", "no-voice=1s,short=1s")["events"]
        self.assertEqual({e["kind"] for e in events} & {"mute", "no-voice", "stall"}, {"mute", "no-voice", "stall"})
        record = re.search(r'<script id="record-0" type="application/json">(.*?)</script>', page.read_text(), re.S).group(1)
        thumbnails = json.loads(record)["thumbnails"]
        self.assertEqual(sum(t["kind"] == "stall" for t in thumbnails), 0)
        for event in events:
            if event["kind"] not in ("mute", "no-voice"):
                continue
            with self.subTest(event):
                (image,) = [t["image"] for t in thumbnails if (t["kind"], t["start_s"]) == (event["kind"], event["start_s"])]
                jpeg = base64.b64decode(image.partition(",")[2])
                words = "ffmpeg -v error -f mjpeg -i - -vf scale=1:1 -pix_fmt gray -f rawvideo -".split()
                luma = subprocess.run(words, input=jpeg, stdout=subprocess.PIPE, check=True).stdout[0] * 219 / 255 + 16
                self.assertAlmostEqual((luma - 40) / 15, event["start_s"], delta=0.45)

    def test_rules_can_be_set(self):
        self.assertEqual(self.scan_one(self.faulty, "--min", "black=3s")["totals"]["black"]["events"], 0)
        settings = self.scan(self.faulty, "--min", "black=3s,mute=9", "--gap", "freeze=2s")["settings"]["rules"]
        self.assertEqual((settings["black"]["min_s"], settings["mute"]["min_s"]), (3.0, 9.0))
        self.assertEqual(settings["freeze"]["gap_s"], 2.0)

    def test_files_are_not_overwritten_unasked(self):
        target = self.folder / "report.json"
        command = ("scan", "-q", "--json", "-o", target, self.faulty)
        first = run(*command)
        self.assertEqual(first.returncode, 0)
        validate(json.loads(target.read_text()))
        second = run(*command)
        self.assertEqual(second.returncode, 2)
        self.assertIn("-y", second.stderr.decode())
        self.assertEqual(run(*command, "-y").returncode, 0)

    def test_wrong_usage(self):
        for wrong in (
            [],
            ["--min", "purple=1s", self.faulty],
            ["--min", "black", self.faulty],
            ["--fail-on", "black=soon", self.faulty],
            ["--json", "--csv", self.faulty],
            ["--gap", "black=-0", self.faulty],
            ["--min", "black=1s,black=2s", self.faulty],
            ["--stall", "20s", "--min", "stall=1s", self.faulty],
            ["-j", "0", self.faulty],
            ["--html", "-", self.faulty],
            ["--html", "/dev/stdout", self.faulty],
        ):
            with self.subTest(wrong):
                done = run("scan", *wrong)
                self.assertEqual(done.returncode, 2, done.stdout)
                self.assertIn(wrong[0] if wrong else "INPUT", done.stderr.decode())

    def test_standard_input_can_be_given_once(self):
        with subprocess.Popen([PROGRAM, "--version"], stdout=subprocess.PIPE) as pipe:
            for names in (["-", "-"], ["-", "pipe:0"], ["/dev/stdin", self.faulty, "-"]):
                with self.subTest(names):
                    done = run("scan", *names, "-j2", stdin=pipe.stdout)
                    self.assertEqual(done.returncode, 2)
                    self.assertIn(b"standard input is given twice", done.stderr)
        with self.faulty.open("rb") as stream:  # a file on it has a name of its own
            self.assertEqual(len(self.scan("-", self.faulty, stdin=stream)["inputs"]), 2)

    def test_other_names_of_standard_output(self):
        for name in ("/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"):
            with self.subTest(name):
                self.scan(self.faulty, "-o", name)

    def seconds_to_start(self):
        start = time.monotonic()
        self.assertEqual(run("--version").returncode, 0)
        return time.monotonic() - start

    def seconds_to_first_progress_line(self):
        """Of an input that says nothing."""
        start = time.monotonic()
        with subprocess.Popen([PROGRAM, "scan", "-"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE) as process:
            line = process.stderr.readline()
            seconds = time.monotonic() - start
            self.assertIn(b"0:00:00", line)
            process.stdin.close()
        self.assertEqual(process.returncode, 3)
        return seconds

    def test_first_progress_line_comes_within_a_second_of_an_input_that_says_nothing(self):
        # A busy machine is slow to start anything, and may hold up one line, hardly all of them.
        self.assertTrue(any(self.seconds_to_first_progress_line() - self.seconds_to_start() < 1.0 for _ in range(20)))

    def test_bar_fits_the_terminal_and_counts_inputs_of_unknown_length(self):
        primary, terminal = pty.openpty()
        termios.tcsetwinsize(terminal, (24, 34))
        streams = {"stdin": subprocess.PIPE, "stdout": subprocess.DEVNULL, "stderr": terminal}
        with subprocess.Popen([PROGRAM, "scan", self.faulty, "-"], env=os.environ | {"TERM": "xterm"}, **streams) as process:
            shown = b""
            bars = []
            # An erased bar is an empty one; those before show less than the half that the first input is.
            while not (half := [bar for bar in bars if bar.startswith(b"[############............]  50% ")]) and len(bars) < 300:
                shown += os.read(primary, 1000)
                bars = [bar.removesuffix(b"\x1b[K") for bar in shown.split(b"\r")[1:-1]]
            process.stdin.close()
        self.assertTrue(half, bars)
        self.assertEqual(len(half[0]), 33)
        os.close(primary)
        os.close(terminal)


class Endings(ScanTest):
    """Outputs that fail, files that must not be lost, and scans that are stopped."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.faulty = cls.clip_of("faulty.mkv", FAULTY, "-c:v mpeg4")

    def setUp(self):
        self.work = self.folder / self.id().rpartition(".")[2]
        self.work.mkdir()

    def files(self):
        return sorted(path.name for path in self.work.iterdir())

    def start(self, *arguments, **options):
        """A scan of standard input, whose writer stays silent."""
        streams = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE} | options
        return subprocess.Popen([PROGRAM, "scan", *map(str, arguments)], **streams)

    def feed(self, process):
        """Writes a clip to the scan, which may end before it has read all."""
        try:
            process.stdin.write(self.faulty.read_bytes())
            process.stdin.flush()
        except BrokenPipeError:
            with contextlib.suppress(BrokenPipeError):
                process.stdin.close()  # which tries again to write the rest

    def wait_for_files(self):
        """The signals are watched before a file is made."""
        while not self.files():
            time.sleep(0.01)

    def wait_until_read(self, process):
        """Waits until the scan has taken a byte: then its input is being analysed."""
        process.stdin.write(b"x")
        process.stdin.flush()
        while fcntl.ioctl(process.stdin, termios.FIONREAD, bytes(4)) != bytes(4):
            time.sleep(0.01)

    def test_report_that_cannot_get_its_name_is_kept(self):
        late = self.work / "late.json"
        with self.start("-q", "--json", "-o", late, "-") as process:
            self.wait_for_files()
            late.write_text("somebody else's")
            self.feed(process)
            _, message = process.communicate()
            self.assertEqual(process.returncode, 3)
        self.assertEqual(late.read_text(), "somebody else's")
        late.unlink()
        (kept,) = self.work.iterdir()
        validate(json.loads(kept.read_text()))
        self.assertIn(str(kept), message.decode())

    def test_report_does_not_depend_on_the_table_and_the_page(self):
        report = self.work / "report.json"
        command = ("--json", "-o", report, "-y", self.faulty, "--fail-on", "black")
        with open("/dev/full", "wb") as full, self.start(*command, stdout=full) as process:
            self.assertEqual(process.wait(), 3)
            self.assertEqual(process.stderr.readlines()[-1], b"zel-monitor: standard output: No space left on device\n")
        self.assertEqual(json.loads(report.read_text())["exit_status"], 3)
        report.unlink()
        with self.start(*command, "-") as process:
            process.stdout.close()
            self.feed(process)
            process.stdin.close()
            self.assertNotIn(b"zel-monitor", process.stderr.read())
            self.assertEqual(process.wait(), -signal.SIGPIPE)
        self.assertEqual(len(json.loads(report.read_text())["inputs"]), 2)
        self.scan_one(self.faulty, "--html", "/dev/full", status=3)

    def test_closed_terminal_ends_a_scan_with_a_report(self):
        report = self.work / "report.json"
        heeding = {"preexec_fn": lambda: signal.signal(signal.SIGHUP, signal.SIG_DFL)}  # also if this test does not
        with self.start("-q", "--json", "-o", report, "-", **heeding) as process:
            self.wait_until_read(process)
            process.send_signal(signal.SIGHUP)
            process.send_signal(signal.SIGHUP)
            self.assertEqual(process.wait(), 75)
        self.assertEqual(self.files(), ["report.json"])
        self.assertEqual(json.loads(report.read_text())["inputs"][0]["problem"], "stopped before its end")
        report.unlink()
        ignoring = {"preexec_fn": lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN)}
        with self.start("-q", "--json", "-o", report, "-", **ignoring) as process:
            self.wait_for_files()
            process.send_signal(signal.SIGHUP)
            process.communicate(self.faulty.read_bytes())
            self.assertEqual(process.returncode, 0)

    def test_scan_that_is_killed_leaves_nothing_half_written(self):
        readable, writable = os.pipe()
        os.set_blocking(writable, False)
        with contextlib.suppress(BlockingIOError):
            while os.write(writable, bytes(4096)):
                pass
        os.set_blocking(writable, True)
        outputs = ["--html", self.work / "page.html", "--csv", "-o", self.work / "events.csv"]
        with self.start("-", "--fail-on", "black", *outputs, stdout=writable) as process:
            while "events.csv" not in self.files():  # made after the page, and its verdict waits for a reader
                time.sleep(0.01)
            process.send_signal(signal.SIGTERM)
            process.send_signal(signal.SIGINT)
            self.assertIn(process.wait(), (-signal.SIGTERM, -signal.SIGINT))
        self.assertEqual(self.files(), ["events.csv"])
        os.close(readable)
        os.close(writable)

    def test_standard_error_that_takes_nothing_ends_nothing(self):
        with open("/dev/full", "wb") as full, self.start("-", stderr=full) as process:
            time.sleep(1)  # the first progress line
            table, _ = process.communicate(self.faulty.read_bytes())
            self.assertEqual(process.returncode, 0)
            self.assertIn(b"black", table)
            refused = subprocess.run([PROGRAM, "scan", self.faulty, "-o", self.faulty], stderr=full, check=False)
            self.assertEqual(refused.returncode, 2)

    def test_closed_standard_streams_are_not_taken_by_files(self):
        target = self.work / "events.csv"
        with self.start("-", "--csv", "-o", target, preexec_fn=lambda: os.close(2)) as process:
            time.sleep(1)  # the first progress line
            process.communicate(self.faulty.read_bytes())
        self.assertEqual({line.split(",")[0] for line in target.read_text().splitlines()}, {"input", "-"})

    def test_output_that_takes_no_more_ends_the_run_and_no_input_is_blamed(self):
        for output in (["--jsonl", "-o", "/dev/full"], ["--csv", "-o", "/dev/full"], ["-o", "/dev/full"]):
            with self.subTest(output):
                done = run("scan", "-q", self.faulty, self.faulty, *output)
                self.assertEqual(done.returncode, 3)
                self.assertEqual(done.stderr, b"zel-monitor: /dev/full: No space left on device\n")
                self.assertEqual(done.stdout, b"")

    def test_output_that_takes_no_more_does_not_wait_for_a_silent_input(self):
        with self.start("-q", "--jsonl", "-", "-o", "/dev/full") as process:
            self.feed(process)
            self.assertIn(b"No space left", process.stderr.read())
            self.assertEqual(process.wait(), 3)

    def test_reader_that_has_seen_enough_ends_the_run_quietly(self):
        with self.start("-q", "--csv", "-", "--html", self.work / "page.html") as process:
            process.stdout.readline()
            process.stdout.close()
            self.feed(process)
            self.assertEqual(process.stderr.read(), b"")
            self.assertEqual(process.wait(), -signal.SIGPIPE)
        self.assertEqual(self.files(), [])

    def test_no_input_or_output_is_written_over(self):
        clip = self.work / "clip.mkv"
        clip.write_bytes(self.faulty.read_bytes())
        for outputs in (["-o", clip], ["--html", f"{self.work}/../{self.work.name}/clip.mkv"], ["-o", "x", "--html", "./x"]):
            with self.subTest(outputs):
                done = run("scan", "-q", clip, *outputs, "-y", cwd=self.work)
                self.assertEqual(done.returncode, 2)
                self.assertEqual(self.files(), ["clip.mkv"])
        with clip.open("rb") as stream:
            self.assertEqual(run("scan", "-", "-o", clip, "-y", stdin=stream).returncode, 2)
        self.assertEqual(run("watch", clip, "--log", clip).returncode, 2)
        self.assertEqual(clip.read_bytes(), self.faulty.read_bytes())

    def test_refused_run_leaves_no_file(self):
        for form in ("--json", "--jsonl", "--csv"):
            done = run("scan", "-q", self.faulty, form, "-o", self.work / "report", "--html", self.work / "none/page")
            self.assertEqual(done.returncode, 2)
            self.assertEqual(self.files(), [])

    def test_interrupted_scan_reports_what_was_analysed(self):
        page = self.work / "page.html"
        with self.start("-q", "--jsonl", "-", self.faulty, "--fail-on", "mute", "--html", page) as process:
            self.feed(process)
            while json.loads(process.stdout.readline())["kind"] != "black":
                pass
            process.send_signal(signal.SIGINT)
            self.assertNotIn(b"short", process.stdout.read())  # a stop is no early end of the stream
            first, second = process.stderr.read().decode().splitlines()
            self.assertEqual(process.wait(), 75)
        self.assertEqual(first, "-: INCOMPLETE, no pass: stopped before its end")
        self.assertEqual(second, f"{self.faulty}: INCOMPLETE, no pass: not begun, the scan was stopped")
        self.assertTrue(page.stat().st_size)

    def test_interrupted_scan_does_not_wait_for_the_writer_of_a_named_pipe(self):
        pipe = self.work / "pipe"
        os.mkfifo(pipe)
        for name, arguments, writes in (("silent", [pipe], True), ("absent", [self.faulty, pipe, "-j", 2], False)):
            with self.subTest(name), self.start("-q", "--jsonl", *arguments) as process:
                with pipe.open("wb") if writes else contextlib.nullcontext() as writer:
                    if writes:
                        writer.write(self.faulty.read_bytes())
                        writer.flush()
                    while json.loads(process.stdout.readline())["kind"] != "black":
                        pass
                    process.send_signal(signal.SIGINT)
                    self.assertIn(b"stopped", process.stderr.read())
                    self.assertEqual(process.wait(), 75)

    def test_names_that_look_like_urls_and_patterns(self):
        (self.work / "12:30.mkv").write_bytes(self.faulty.read_bytes())
        (self.work / "p%03d.png").write_bytes(self.clip_of("black.png", BLACK, "-frames:v 1").read_bytes())
        report = self.scan("12:30.mkv", "p%03d.png", cwd=self.work)
        self.assertEqual([part["input"] for part in report["inputs"]], ["12:30.mkv", "p%03d.png"])
        self.assert_events(report["inputs"][0], BLACK_EVENT)
        self.assert_events(report["inputs"][1], ("black", 0.0, 0.04))

    def test_names_in_brackets(self):
        for name in ("[x]", "[a,b]"):
            with self.subTest(name):
                (self.work / name).write_bytes(self.faulty.read_bytes())
                self.assertEqual([part["input"] for part in self.scan(name, name, cwd=self.work)["inputs"]], [name, name])
                self.assertEqual(self.scan_one("--", name, cwd=self.work)["input"], name)
                outputs = ["-o", f"{name[:-1]}.csv]", f"--html={name[:-1]}.html]"]
                self.assertEqual(run("scan", "-q", "--csv", name, *outputs, cwd=self.work).returncode, 0)
                self.assertEqual(run("watch", name, "--speed", "1000", "--log", f"{name[:-1]}.log]", cwd=self.work).returncode, 0)
                self.assertLessEqual({name, f"{name[:-1]}.csv]", f"{name[:-1]}.html]", f"{name[:-1]}.log]"}, set(self.files()))

    def test_names_are_exact_for_machines_and_harmless_on_terminals(self):
        name = "a\x1b[2J\nb.mkv"
        (self.work / name).write_bytes(self.faulty.read_bytes())
        self.assertEqual(self.scan_one(name, cwd=self.work)["input"], name)
        self.assertIn(b"a\\x1b[2J\\x0ab.mkv\n", run("scan", "-q", name, "-o", "-", cwd=self.work).stdout)
        self.assertEqual(self.files(), [name])

    def test_demo_stream_has_one_name(self):
        report = self.work / "report.json"
        done = run("scan", "demo:", "--json", "-o", report, "--fail-on", "black")
        self.assertTrue(done.stdout.startswith(b"demo:: FAIL: black"), done.stdout)
        self.assertEqual(json.loads(report.read_text())["inputs"][0]["input"], "demo:")


if __name__ == "__main__":
    unittest.main()

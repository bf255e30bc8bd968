#!/usr/bin/env python3
"""Runs bench/accuracy on one clip of each kind from end to end, as a person would; all clips take minutes."""
import json
import os
import pathlib
import signal
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["ACCURACY"]


def run(*arguments):
    return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=300)


class AccuracyTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="zel-accuracy-test-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def test_case_of_the_corpus_is_made_scanned_and_scored(self):
        kept = self.folder / "it's kept; [a,b]:c"  # a name that FFmpeg's filters must be told with care
        for _ in range(2):
            done = run("-q", "--only", "black-cut", "--keep", kept)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertIn("| black-cut | easy | cut to black and back | found | found |", done.stdout)
            clip = kept / "black-cut.mkv"
            made = clip.stat().st_mtime_ns
        self.assertEqual(clip.stat().st_mtime_ns, made)  # not made a second time

    def test_clips_are_only_made_where_that_is_asked_for(self):
        done = run("-q", "--only", "texture-frozen-corner", "--make", self.folder)
        self.assertEqual(done.stdout, f"{self.folder}/texture-frozen-corner-clock.mp4\n")
        done = run("-q", "--only", "texture-frozen-corner", "--frames", "--keep", self.folder)
        self.assertIn("| texture-frozen-corner-clock | 50 | 0 | 0 | 0 | 0 | 0 | 4 |", done.stdout)

    def test_real_clip_is_made_faulty_and_good_as_it_is(self):
        (self.folder / "tune").mkdir()
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=328x248:r=25:d=5,scroll=h=0.02",
                        self.folder / "tune/moving.mp4"], check=True, stdin=subprocess.DEVNULL)
        (self.folder / "clips.json").write_text(json.dumps(
            [{"half": "tune", "file": "tune/moving.mp4", "type": "video", "from": [1], "holds": {}}]))
        done = run("-q", "--real", self.folder, "--only", "moving.black")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("| black | black | 1 of 1 | 0 | 0 | 1 of 1 | 0 | 1 of 1 | 0 |", done.stdout)
        done = run("-q", "--real", self.folder, "--only", "moving.loss-h264", "--keep", self.folder / "clips")
        self.assertIn("| loss-h264 |", done.stdout)
        stream = (self.folder / "clips/moving.loss-h264.ts").read_bytes()
        last = {}
        lost = 0
        for packet in (stream[i:i + 188] for i in range(0, len(stream), 188)):
            pid, count = int.from_bytes(packet[1:3], "big") & 0x1FFF, packet[3] & 15
            if packet[3] & 16 and pid != 0x1FFF:
                lost += pid in last and count != (last[pid] + 1) % 16
                last[pid] = count
        self.assertGreater(lost, 0)

    def test_wrong_use_is_told(self):
        for arguments, status, words in ((("--only", "no-such-clip"), 2, "no clip has 'no-such-clip' in its name"),
                                         (("--real", self.folder), 3, "bench/real_clips fetches the clips"),
                                         (("--real", self.folder, "--half", "third"), 2, "third")):
            with self.subTest(arguments):
                done = run(*arguments)
                self.assertEqual(done.returncode, status)
                self.assertIn(words, done.stderr)

    def test_stopped_run_removes_its_clips(self):
        environment = os.environ | {"TMPDIR": str(self.folder)}
        with subprocess.Popen([PROGRAM], env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stderr.readline()  # the first case of many
            self.assertEqual(len(list(self.folder.iterdir())), 1)
            process.send_signal(signal.SIGTERM)
            self.assertIn(b"accuracy: stopped before its end", process.stderr.read())
            self.assertEqual(process.wait(), 3)
        self.assertEqual(list(self.folder.iterdir()), [])


if __name__ == "__main__":
    unittest.main()

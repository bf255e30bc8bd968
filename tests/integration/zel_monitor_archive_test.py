#!/usr/bin/python3
"""Walks `zel-monitor scan --store` and `zel-monitor report` through interruptions, shards, failures and surveys."""
import csv
import io
import json
import os
import pathlib
import shutil
import signal
import subprocess
import unittest

import jsonschema

from zel_monitor_scan_support import MOVING, PROGRAM, SCHEMA_FILE, ScanTest, run, validate

ARCHIVE_SCHEMA_FILE = SCHEMA_FILE.with_name("archive-report.schema.json")
FAULTY = "testsrc=s=320x240:r=25:d=6,hue=h=360*t,drawbox=t=fill:c=black:enable='between(t,2,3.99)'"


class ArchiveTest(ScanTest):
    """Tests with a folder of media files for each."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.faulty = cls.clip_of("faulty.mkv", FAULTY, "-c:v mpeg4")
        cls.good = cls.clip_of("good.mkv", MOVING, "-t 1 -c:v mpeg4")

    def setUp(self):
        self.work = self.folder / self.id()
        self.media = self.work / "media"
        (self.media / "below").mkdir(parents=True)
        self.store = self.work / "store"
        shutil.copy(self.faulty, self.media / "a.mkv")
        shutil.copy(self.good, self.media / "below" / "b.mkv")
        (self.media / "notes.txt").write_text("no media\n")

    def store_scan(self, *arguments, status=0, **options):
        """How many inputs were in the store, of how many."""
        done = run("scan", *arguments, "--store", self.store, **options)
        self.assertEqual(done.returncode, status, done.stderr.decode())
        words = done.stderr.decode().splitlines()[-1].split()
        return int(words[0]), int(words[2])

    def stored_files(self):
        return sorted(path for path in self.store.glob("??/*.json"))

    def report(self, *arguments, status=0):
        done = run("report", self.store, "--json", *arguments)
        self.assertEqual(done.returncode, status, done.stderr.decode())
        report = json.loads(done.stdout)
        jsonschema.Draft202012Validator(json.loads(ARCHIVE_SCHEMA_FILE.read_text())).validate(report)
        return report


class Store(ArchiveTest):
    def test_what_is_stored_and_valid_is_not_scanned_again(self):
        self.assertEqual(self.store_scan(self.media), (0, 2))
        first = run("scan", "-q", "--json", self.media, "--store", self.store).stdout
        validate(json.loads(first))
        before = {path: path.stat().st_ino for path in self.stored_files()}
        self.assertEqual(self.store_scan(self.media, self.media / "a.mkv"), (2, 2))
        self.assertEqual(self.store_scan("media/./a.mkv", cwd=self.work), (1, 1))
        self.assertEqual(run("scan", "-q", "--json", self.media, "--store", self.store).stdout, first)
        self.assertEqual({path: path.stat().st_ino for path in self.stored_files()}, before)

        self.assertEqual(self.store_scan(self.media, "--min", "black=3s"), (0, 2))
        self.assertEqual(self.store_scan(self.media, "--rescan"), (0, 2))
        os.utime(self.media / "a.mkv", ns=(1, 1))
        self.assertEqual(self.store_scan(self.media), (1, 2))

    def test_another_policy_judges_what_is_stored_anew(self):
        self.store_scan(self.media)
        self.assertEqual(self.store_scan(self.media, "--fail-on", "black=1s", status=1), (2, 2))
        self.assertEqual(self.report(status=1)["inputs"][0]["verdict"], "fail")
        self.assertEqual(self.report("--fail-on", "green")["totals"]["passed"], 2)

    def test_report_refuses_a_policy_that_the_scan_did_not_look_for(self):
        self.store_scan(self.media)
        for policy in ("overexposed", "black=0.1"):
            done = run("report", self.store, "--fail-on", policy)
            self.assertEqual(done.returncode, 2)
            self.assertIn(b"was not scanned for that", done.stderr)

    def test_what_was_found_in_a_file_stays_while_it_is_away(self):
        self.store_scan(self.media / "a.mkv")
        (self.media / "a.mkv").rename(self.work / "a.mkv")
        self.store_scan(self.media / "a.mkv", status=3)
        (self.work / "a.mkv").rename(self.media / "a.mkv")
        self.assertEqual(self.store_scan(self.media / "a.mkv"), (1, 1))

    def test_content_tells_what_was_only_touched(self):
        self.store_scan(self.media, "--by-content")
        for path in self.media.rglob("*.mkv"):
            os.utime(path, ns=(5, 5))
        self.assertEqual(self.store_scan(self.media, "--by-content"), (2, 2))
        self.assertEqual(self.store_scan(self.media), (2, 2))
        size = (self.media / "a.mkv").stat().st_size
        (self.media / "a.mkv").write_bytes(bytes(size))
        self.assertEqual(self.store_scan(self.media, "--by-content", status=3), (1, 2))

    def test_failures_are_stored_and_tried_again_on_request(self):
        (self.media / "text.mkv").write_text("this is no video\n")
        gone = self.media / "gone.mkv"
        self.assertEqual(self.store_scan(self.media, gone, status=3), (0, 4))
        self.assertEqual(self.store_scan(self.media, gone, status=3), (4, 4))
        self.assertEqual(self.store_scan(self.media, gone, "--retry-failed", status=3), (2, 4))
        shutil.copy(self.good, gone)
        self.assertEqual(self.store_scan(self.media, gone, status=3), (3, 4))  # two names of one file
        report = self.report(status=3)
        self.assertEqual(report["totals"]["incomplete"], 1)
        self.assertEqual(pathlib.Path(report["inputs"][0]["input"]).name, "text.mkv")

    def test_file_beyond_its_time_limit_is_a_stored_failure(self):
        limit = ("--time-limit", "1ms", "--time-limit-per-gb")
        self.assertEqual(self.store_scan(self.media / "a.mkv", *limit, "0s", status=3), (0, 1))
        self.assertIn("time limit", self.report(status=3)["inputs"][0]["problem"])
        self.assertEqual(self.store_scan(self.media / "a.mkv", *limit, "1000000h", status=3), (1, 1))
        self.assertEqual(self.store_scan(self.media / "a.mkv", *limit, "1000000h", "--retry-failed"), (0, 1))

    def test_interrupted_scan_keeps_what_is_done_and_asks_to_be_run_again(self):
        pipe = self.media / "c.mkv"
        os.mkfifo(pipe)
        command = [PROGRAM, "scan", "-q", self.media, pipe, "--store", self.store]
        with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stdout.readline()  # a.mkv is done; nobody writes to the pipe
            process.stdout.readline()
            process.send_signal(signal.SIGTERM)
            process.communicate()
            self.assertEqual(process.returncode, 75)
        self.assertEqual(len(self.stored_files()), 2)
        pipe.unlink()
        self.assertEqual(self.store_scan(self.media), (2, 2))

    def test_store_that_cannot_be_used_is_refused(self):
        blocked = self.work / "file"
        blocked.write_text("")
        self.assertEqual(run("scan", self.media, "--store", blocked).returncode, 2)
        self.assertEqual(run("scan", "-", "--store", self.store).returncode, 2)
        self.assertEqual(run("report", self.store).returncode, 2)
        self.assertEqual(run("scan", self.media, "--retry-failed").returncode, 2)
        self.assertEqual(run("scan", self.media, "--then-scan").returncode, 2)
        self.assertEqual(run("scan", self.media, "--shard", "auto").returncode, 2)


class Lists(ArchiveTest):
    def test_list_keeps_its_order_and_shards_share_it_out(self):
        for i in range(12):
            shutil.copy(self.good, self.media / f"{i}.mkv")
        names = [str(self.media / f"{i}.mkv") for i in (5, 3, 11, 0, 7)]
        (self.work / "list").write_bytes(b"\0".join(name.encode() for name in names))
        with (self.work / "list").open("rb") as listing:
            report = self.scan("--files-from", "-", "-0", stdin=listing)
        self.assertEqual([part["input"] for part in report["inputs"]], names)

        self.assertEqual(self.scan("--files-from", "/dev/null")["inputs"], [])
        shares = [self.store_scan(self.media, "--shard", f"{i}/3")[1] for i in (1, 2, 3)]
        self.assertEqual(sum(shares), 14)
        self.assertEqual(len(self.stored_files()), 14)
        task = {**os.environ, "SLURM_ARRAY_TASK_ID": "5", "SLURM_ARRAY_TASK_MIN": "4", "SLURM_ARRAY_TASK_MAX": "6",
                "SLURM_ARRAY_TASK_COUNT": "3"}
        self.assertEqual(self.store_scan(self.media, "--shard", "auto", env=task), (shares[1], shares[1]))

    def test_report_names_what_is_missing_in_the_store(self):
        self.store_scan(self.media)
        listing = self.work / "list"
        listing.write_text(f"{self.media}\nmissing.mkv\n")
        report = self.report("--files-from", listing, status=3)
        self.assertEqual([(i["input"], i["missing"]) for i in report["inputs"]],
                         [("missing.mkv", True), (str(self.media / "a.mkv"), False),
                          (str(self.media / "below/b.mkv"), False)])
        self.assertEqual(self.report()["totals"]["inputs"], 2)
        self.stored_files()[0].write_text("{")
        done = run("report", self.store)
        self.assertIn(b"1 files hold no report", done.stderr)

    def test_report_comes_in_every_format_and_leads_to_pages(self):
        self.store_scan(self.media, "--fail-on", "black", status=1)
        index = self.work / "index.html"
        done = run("report", self.store, "--html", index)
        self.assertEqual(done.returncode, 1)
        self.assertIn("2 inputs, 0:00:07.000 analysed: 0 not analysed to the end, 0 missing, 1 failed, 1 passed",
                      done.stdout.decode())
        rows = list(csv.DictReader(io.StringIO(run("report", self.store, "--csv").stdout.decode())))
        self.assertEqual([(pathlib.Path(row["input"]).name, row["verdict"], row["black_events"]) for row in rows],
                         [("a.mkv", "fail", "1"), ("b.mkv", "pass", "0")])
        lines = [json.loads(line) for line in run("report", self.store, "--jsonl").stdout.splitlines()]
        self.assertEqual([line["kind"] for line in lines], ["black", "status", "status"])
        for line in lines:
            validate(line, "status_line" if line["kind"] == "status" else "event_line")

        pages = list((self.work / "index-pages").iterdir())
        if pages:  # this program was built with the page
            self.assertEqual(len(pages), 1)
            self.assertIn(f"index-pages/{pages[0].name}", index.read_text())
            run("report", self.store, "--html", index, "-y", "--page", self.media / "below/b.mkv")
            self.assertEqual(len(list((self.work / "index-pages").iterdir())), 2)
        self.assertEqual(run("report", self.store, "--html", index).returncode, 2)

    def test_schema_of_the_report_is_the_documented_one(self):
        self.assertEqual(run("report", "--schema").stdout, ARCHIVE_SCHEMA_FILE.read_bytes())


class Survey(ArchiveTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        coding = "-c:v libx264 -preset ultrafast -g 25 -keyint_min 25 -sc_threshold 0 -bf 2"
        cls.black = cls.clip_of("black.mp4", f"{MOVING},drawbox=t=fill:c=black:enable='between(t,3,6.99)'", "-t 12", coding)
        cls.gap = cls.clip_of("gap.mkv", f"{MOVING},trim=duration=8,setpts=PTS+gte(T\\,4)*5/TB", "-fps_mode passthrough", coding)
        cls.frozen = cls.clip_of("frozen.ts", f"{MOVING},trim=duration=3,loop=200:1:74,trim=duration=11,setpts=N/25/TB", coding)
        cls.clean = cls.clip_of("clean.mp4", MOVING, "-t 12", coding)

    def test_tells_from_key_frames_and_says_so(self):
        for clip, kind, start, end in ((self.black, "black", 3, 7), (self.gap, "stall", 4, 9), (self.frozen, "freeze", 3, 11)):
            with self.subTest(kind):
                part = self.scan_one(clip, "--survey")
                self.assert_events(part, (kind, start, end), within=1.05)
                self.assertEqual(part["survey"]["deserves_scan"], True)
                self.assertAlmostEqual(part["survey"]["longest_distance_s"], 1.0, delta=0.05)
        part = self.scan_one(self.clean, "--survey")
        self.assertEqual((part["events"], part["survey"]["deserves_scan"], part["complete"]), ([], False, True))
        for form, words in ((["--brief"], "(survey: deserves"), ([], "SURVEY of"), (["--csv"], ",survey\n"),
                            (["--jsonl"], '"survey":true')):
            self.assertIn(words, run("scan", "-q", *form, "--survey", self.black).stdout.decode())

    def test_goes_on_with_what_deserves_it(self):
        clips = (self.black, self.clean)
        self.assertEqual(self.store_scan(*clips, "--survey"), (0, 2))
        self.assertEqual(self.report()["totals"]["deserve_scan"], 1)
        self.assertEqual(self.store_scan(*clips, "--survey", "--then-scan"), (1, 2))
        report = self.report()
        self.assertEqual([part["survey"] for part in report["inputs"]], [False, True])
        self.assertEqual(self.store_scan(*clips, "--survey"), (2, 2))  # a full scan does for a survey
        self.assertEqual(self.store_scan(*clips), (1, 2))


if __name__ == "__main__":
    unittest.main()

"""What the tests of `zel-monitor scan` share: the program, clips, reports."""
import json
import os
import pathlib
import subprocess
import tempfile
import unittest

import jsonschema

PROGRAM = os.environ["ZEL_MONITOR"]
SCHEMA_FILE = pathlib.Path(os.environ["ZEL_SCAN_SCHEMA"])
SCHEMA = json.loads(SCHEMA_FILE.read_text())

BLACK = "color=black:s=320x240:r=25"
MOVING = "testsrc=s=320x240:r=25,hue=h=360*t"  # its colours and clock change enough to be no freeze


def run(*arguments, **options):
    """Runs the program to its end with captured output."""
    return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, timeout=300, **options)


def validate(document, part=None):
    """Raises unless `document` is a whole report, or that part of one."""
    schema = SCHEMA if part is None else {"$ref": f"#/$defs/{part}", "$defs": SCHEMA["$defs"]}
    jsonschema.Draft202012Validator(schema).validate(document)


class ScanTest(unittest.TestCase):
    """Tests with a folder for their clips."""

    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory(prefix="zel-scan-")
        cls.addClassCleanup(scratch.cleanup)
        cls.folder = pathlib.Path(scratch.name)

    @classmethod
    def clip(cls, name, *arguments):
        """Makes a file with ffmpeg; `arguments` are words, inputs with their own -i."""
        path = cls.folder / name
        words = [word for argument in arguments for word in (argument.split() if " " in argument else [argument])]
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *words, str(path)], check=True)
        return path

    @classmethod
    def clip_of(cls, name, graph, *arguments):
        """Makes a file from one video graph."""
        return cls.clip(name, "-f lavfi -i", graph, *arguments)

    def scan(self, *arguments, status=0, **options):
        """The validated report on the inputs, which must end with `status`."""
        done = run("scan", "-q", "--json", *arguments, **options)
        self.assertEqual(done.returncode, status, done.stderr.decode())
        report = json.loads(done.stdout)
        validate(report)
        self.assertEqual(report["exit_status"], status)
        return report

    def scan_one(self, *arguments, **options):
        """The one input's part of the report."""
        return self.scan(*arguments, **options)["inputs"][0]

    def assert_events(self, report, *expected, within=0.05):
        """Compares (kind, start, end) of the events of these kinds, and no others of them."""
        kinds = {kind for kind, _, _ in expected}
        found = [(e["kind"], e["start_s"], e["end_s"]) for e in report["events"] if e["kind"] in kinds]
        self.assertEqual([kind for kind, _, _ in found], [kind for kind, _, _ in expected], report["events"])
        for have, want in zip(found, expected):
            self.assertAlmostEqual(have[1], want[1], delta=within, msg=f"{have} is not {want}")
            self.assertAlmostEqual(have[2], want[2], delta=within, msg=f"{have} is not {want}")

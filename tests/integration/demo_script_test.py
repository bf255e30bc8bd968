#!/usr/bin/python3
"""Runs scripts/demo with stand-ins for what it installs, builds and starts."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

DEMO = pathlib.Path(__file__).resolve().parents[2] / "scripts/demo"


class Demo(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="zel-demo-")
        self.addCleanup(scratch.cleanup)
        self.tree = pathlib.Path(scratch.name)
        (self.tree / "scripts").mkdir()
        shutil.copy(DEMO, self.tree / "scripts/demo")
        self.page = self.tree / "build/demo/scan.html"
        self.write("scripts/install", "")
        self.write("bin/cmake", "")

    def write(self, name, script):
        path = self.tree / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"#!/bin/sh\n{script}\n")
        path.chmod(0o755)

    def run_demo(self, *arguments, scan):
        """Its status and standard output, when `scan` is what a scan does."""
        self.write("build/demo/tools/zel-monitor/zel-monitor", f'if [ "$1" = scan ]; then {scan}; fi')
        environment = os.environ | {"PATH": f"{self.tree}/bin:{os.environ['PATH']}"}
        done = subprocess.run([self.tree / "scripts/demo", *arguments], env=environment, capture_output=True, text=True, timeout=300)
        return done.returncode, done.stdout

    def test_names_the_page_that_this_run_wrote(self):
        status, output = self.run_demo(scan='echo new > "$4"')
        self.assertEqual(status, 0)
        self.assertIn(str(self.page), output)
        status, output = self.run_demo(scan="exit 3")
        self.assertEqual(status, 3)
        self.assertNotIn("scan.html", output)

    def test_refuses_what_can_be_read_only_once(self):
        os.mkfifo(self.tree / "pipe")
        for name in ("-", str(self.tree / "pipe")):
            self.assertEqual(self.run_demo(name, scan="exit 0"), (2, ""))


if __name__ == "__main__":
    unittest.main()

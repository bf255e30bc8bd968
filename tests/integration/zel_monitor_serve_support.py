"""What the tests of `zel-monitor serve` share: the program, senders, receivers."""
import datetime
import http.server
import json
import os
import pathlib
import re
import signal
import socket
import subprocess
import tempfile
import threading
import time
import unittest
import urllib.request

import jsonschema

PROGRAM = os.environ["ZEL_MONITOR"]
SCHEMA = json.loads(pathlib.Path(os.environ["ZEL_ALARM_SCHEMA"]).read_text())
PATIENCE_S = 90  # for what takes a few seconds on a machine with nothing else to do

MOVING = "rotate=0.3*t"  # changes all of the frame, and has no edges on a coding grid
GOOD = f"gradients=s=320x240:r=25:n=6:speed=0.05:seed=1,{MOVING}"  # few bits, so that a busy machine loses none
LARGER = f"gradients=s=640x360:r=30:n=6:speed=0.05:seed=1,{MOVING}"
SOUND = "sine=440:r=48000"
# FFmpeg cancels the thread that reads ahead, which the thread sanitizer does not take.
UDP_INPUT = "udp://127.0.0.1:%d" + ("?fifo_size=0" if os.environ.get("ZEL_SANITIZE") == "thread" else "")
FAST = "{analyzeduration: '500000', probesize: '100000'}"


def free_port(kind=socket.SOCK_DGRAM):
    with socket.socket(socket.AF_INET, kind) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for(condition, what):
    end = time.monotonic() + PATIENCE_S
    while time.monotonic() < end:
        if found := condition():
            return found
        time.sleep(0.05)
    raise AssertionError(f"waited in vain: {what}")


class Receiver(http.server.ThreadingHTTPServer):
    """Keeps what is posted; `answers` are given one after another, then 200."""

    def __init__(self, answers=()):
        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(handler):
                body = handler.rfile.read(int(handler.headers["Content-Length"]))
                status = self.answers.pop(0) if self.answers else 200
                if status == 200:
                    self.posted.append((handler.path, json.loads(body)))
                handler.send_response(status)
                handler.end_headers()

            def log_message(handler, *arguments):
                pass

        super().__init__(("127.0.0.1", 0), Handler)
        self.answers, self.posted = list(answers), []
        threading.Thread(target=self.serve_forever, daemon=True).start()


class ServeTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="zel-serve-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        self.config, self.events = self.folder / "streams.yaml", self.folder / "events.jsonl"

    def serve(self, text, *options):
        self.config.write_text(text)
        with (self.folder / "stderr").open("w") as errors:
            self.process = subprocess.Popen([PROGRAM, "serve", "--config", self.config, "--events", self.events,
                                             "--listen", "127.0.0.1:0", *options], stderr=errors)
        self.addCleanup(lambda: (self.process.kill(), self.process.wait()))
        self.port = int(wait_for(lambda: re.search(r"port (\d+)", self.errors()), "start")[1])

    def stop(self):
        self.process.terminate()
        self.assertEqual(self.process.wait(PATIENCE_S), 0, self.errors())

    def errors(self):
        return (self.folder / "stderr").read_text(errors="replace")

    def reload(self, text):
        self.config.write_text(text)
        said = len(self.errors())
        self.process.send_signal(signal.SIGHUP)
        wait_for(lambda: len(self.errors()) > said, "reload")

    def get(self, path):
        with urllib.request.urlopen(f"http://127.0.0.1:{self.port}{path}", timeout=PATIENCE_S) as answer:
            return answer.read()

    def stream(self, name):
        streams = json.loads(self.get("/api/streams"))["streams"]
        return next((stream for stream in streams if stream["name"] == name), None)

    def alarms(self, name=None):
        lines = self.events.read_text().splitlines() if self.events.exists() else []
        alarms = [json.loads(line) for line in lines]
        return [alarm for alarm in alarms if name in (None, alarm["stream"])]

    def moments(self, kind):
        """When the first alarm of the kind was raised and cleared, in seconds since the epoch."""
        of_kind = [alarm["time"] for alarm in self.alarms() if alarm["kind"] == kind]
        return [datetime.datetime.fromisoformat(time).timestamp() for time in of_kind[:2]]

    def told(self, name=None):
        return [("+" if alarm["event"] == "raised" else "-") + alarm["kind"] for alarm in self.alarms(name)]

    def send(self, target, video=GOOD, audio=SOUND, container="-f mpegts"):
        """A sender in real time."""
        words = (["ffmpeg", "-nostdin", "-v", "error", "-re", "-f", "lavfi", "-i", video, "-f", "lavfi", "-i", audio]
                 + ["-c:v", "mpeg2video", "-q:v", "3", "-g", "12", "-c:a", "mp2"]
                 + [*container.split(), target])
        sender = subprocess.Popen(words, stderr=subprocess.DEVNULL)
        self.addCleanup(lambda: (sender.kill(), sender.wait()))
        return sender

    def wait_up(self, name):
        wait_for(lambda: (self.stream(name) or {}).get("state") == "up", f"{name} up")

    def check_alarms(self):
        """Every raise has one clear, and all are as the schema says."""
        ids = {}
        for alarm in self.alarms():
            jsonschema.Draft202012Validator(SCHEMA).validate(alarm)
            ids.setdefault(alarm["id"], []).append(alarm["event"])
        for events in ids.values():
            self.assertEqual(events, ["raised", "cleared"], self.alarms())

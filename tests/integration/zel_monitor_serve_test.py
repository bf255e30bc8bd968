#!/usr/bin/python3
"""`zel-monitor serve` with real senders, receivers and clients on loopback."""
import contextlib
import functools
import http.server
import os
import pathlib
import random
import re
import shutil
import signal
import socket
import subprocess
import threading
import unittest
import urllib.error

from live_sender import LiveSender, clip
from zel_monitor_serve_support import FAST, GOOD, LARGER, MOVING, PROGRAM, SOUND, UDP_INPUT, Receiver, ServeTest, free_port, wait_for


class QuietFiles(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *arguments):
        pass


class Faults(ServeTest):
    def test_each_fault_is_told_once_in_time_and_changes_of_the_stream_are_none(self):
        port = free_port()
        video = (f"{GOOD},drawbox=t=fill:c=black:enable='between(t,3,4.99)'[moving];smptebars=s=320x240:r=25[still];"
                 "[moving][still]overlay=enable='between(t,7,10.99)'")
        sound = "aevalsrc='0.2*sin(2800*t)*not(between(t,13,15))':s=48000"
        faulty = clip(self.folder / "faulty.ts", video, sound, 18)
        larger = clip(self.folder / "larger.ts", LARGER, "sine=440:r=44100,aformat=channel_layouts=stereo", 5, 18)
        ahead, back, lossy = (clip(self.folder / f"{start}.ts", GOOD, SOUND, 5, start) for start in (9000, 20, 25))
        self.serve(f"""
streams: [{{name: a, input: "{UDP_INPUT % port}", options: {FAST}, grace: 1s, rules: {{no-signal: {{min: 1s}}}}}}]
""")
        wait_for(lambda: self.told() == ["+no-signal"], "nobody sends yet")
        sender = LiveSender(port)
        self.addCleanup(sender.close)
        began = sender.play(faulty)
        for stream in (larger, ahead, back):
            sender.play(stream)
        lost = sender.play(lossy, lost=(1.5, 1.7))
        kinds = ("no-signal", "black", "freeze", "mute", "damage", "no-signal")
        expected = [sign + kind for kind in kinds for sign in "+-"][:-1]
        wait_for(lambda: len(self.told()) >= len(expected), f"faults, so far {self.told()}")
        self.assertEqual(self.told(), expected)
        for kind, start, end, least_s, gap_s in (("black", began + 3, began + 5, 0.5, 0.1), ("freeze", began + 7, began + 11, 2, 0.1),
                                                 ("mute", began + 13, began + 15, 1, 0.2), ("damage", lost + 1.5, lost + 2.2, 0, 1)):
            raised, cleared = self.moments(kind)
            self.assertGreater(raised, start + least_s - 0.1, kind)
            self.assertLess(raised, start + least_s + 1 + sender.late_s, kind)
            self.assertLess(cleared, end + gap_s + 1 + sender.late_s, kind)
        self.send(f"udp://127.0.0.1:{port}?pkt_size=1316", LARGER, "sine=440:r=44100")
        wait_for(lambda: self.told()[-1] == "-no-signal", "another sender")
        frames = self.stream("a")["video_frames"]
        wait_for(lambda: self.stream("a")["video_frames"] > frames + 75, "frames after which nothing more is told")
        self.assertEqual(self.told(), expected + ["-no-signal"])
        self.stop()
        self.check_alarms()

    def test_silent_senders_and_garbage_hold_up_nobody(self):
        garbage_port, silent = free_port(), socket.create_server(("127.0.0.1", 0))
        self.addCleanup(silent.close)
        stopped = threading.Event()
        self.addCleanup(stopped.set)

        def throw():
            with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as out:
                chance = random.Random(1)
                while not stopped.wait(0.02):
                    with contextlib.suppress(OSError):
                        out.sendto(chance.randbytes(1316), ("127.0.0.1", garbage_port))

        threading.Thread(target=throw, daemon=True).start()
        self.serve(f"""
defaults: {{open_timeout: 2s, read_timeout: 2s, grace: 1s, reconnect: {{most: 1s}}, rules: {{no-signal: {{min: 1s}}}}}}
streams:
  - {{name: silent, input: "tcp://127.0.0.1:{silent.getsockname()[1]}"}}
  - {{name: garbage, input: "{UDP_INPUT % garbage_port}"}}
  - {{name: nowhere, input: "tcp://127.0.0.1:{free_port(socket.SOCK_STREAM)}"}}
  - {{name: option, format: lavfi, input: "color=s=32x32,realtime", options: {{no_such_option: "1"}}}}
  - {{name: well, format: lavfi, input: "testsrc2=s=64x64:r=5,{MOVING},realtime", grace: 20s}}
""")
        for name, reason in (("silent", "within 2 s"), ("garbage", ""), ("nowhere", "refused"),
                             ("option", "no setting no_such_option")):
            wait_for(lambda: self.told(name) == ["+no-signal"], f"{name} told")
            wait_for(lambda: reason in self.stream(name)["reason"], f"{name}: {reason}")
        self.wait_up("well")
        self.assertEqual(self.told("well"), [])
        self.stop()
        self.check_alarms()

    def test_segments_that_no_longer_come_are_no_signal(self):
        hls = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(QuietFiles, directory=self.folder))
        threading.Thread(target=hls.serve_forever, daemon=True).start()
        self.addCleanup(lambda: (hls.shutdown(), hls.server_close()))
        options = "-f hls -hls_time 1 -hls_flags delete_segments+append_list"
        sender = self.send(str(self.folder / "live.m3u8"), container=options)
        wait_for((self.folder / "live.m3u8").exists, "a playlist")
        self.serve(f"""
streams:
  - name: a
    input: http://127.0.0.1:{hls.server_port}/live.m3u8
    read_timeout: 5s
    rules: {{no-signal: {{min: 2s}}}}
""")
        self.wait_up("a")
        sender.kill()
        wait_for(lambda: self.told() == ["+no-signal"], "no more segments")
        self.send(str(self.folder / "live.m3u8"), container=options)
        wait_for(lambda: self.told() == ["+no-signal", "-no-signal"], "segments again")
        self.stop()
        self.check_alarms()

    def test_one_track_that_stays_away_is_a_stall(self):
        port = free_port()
        self.serve(f"""
streams:
  - {{name: a, input: "{UDP_INPUT % port}", options: {FAST}, grace: 0s, rules: {{no-signal: {{min: 20s}}}}}}
""")
        # Video that ends after 6 s, sound that goes on.
        self.send(f"udp://127.0.0.1:{port}?pkt_size=1316", f"{GOOD},trim=end=6", SOUND)
        wait_for(lambda: "+stall" in self.told(), "stall")
        self.assertEqual(self.told(), ["+stall"])
        self.assertIn("no video", self.alarms()[0]["detail"])
        self.stop()
        self.check_alarms()


class Control(ServeTest):
    def streams(self, *names, more="", graph=f"testsrc2=s=64x64:r=25,{MOVING}"):
        stream = f'format: lavfi, input: "{graph},realtime", labels: {{site: north}}'
        return f"{more}\nstreams:\n" + "".join(f"  - {{name: {name}, {stream}}}\n" for name in names)

    def test_reload_leaves_unchanged_streams_alone_and_takes_no_mistakes(self):
        self.serve(self.streams("a", "b"))
        for name in ("a", "b"):
            self.wait_up(name)
        self.reload(self.streams("a", "c"))
        self.wait_up("c")
        self.assertEqual(self.stream("a")["connections"], 1)
        metrics = self.get("/metrics").decode()
        self.assertIn('zel_stream_up{stream="a",site="north"} 1', metrics)
        self.assertNotIn('stream="b"', metrics)
        self.reload("streams: [{name: x}]")
        self.assertIn("streams.yaml:1: streams[1]: needs a name and an input", self.errors())
        self.assertEqual(self.stream("a")["connections"], 1)
        self.reload(self.streams("a", more="defaults: {threads: 2}"))
        wait_for(lambda: self.stream("a")["video_frames"] < 25 * 3, "a began anew")
        old = self.events.rename(self.folder / "old.jsonl")
        self.reload(self.streams("a", more="defaults: {threads: 2}"))
        self.stop()
        self.assertTrue(old.exists() and self.events.exists())

    def test_reloads_and_reconnects_leave_nothing_behind(self):
        rounds = int(os.environ.get("ZEL_SERVE_ROUNDS", "20"))
        short = '{name: %s, format: lavfi, input: "color=s=32x32:r=10:d=0.1", reconnect: {first: 0.1s, most: 0.1s}}'
        texts = [f"streams:\n  - {short % 'stays'}\n  - {short % other}\n" for other in ("a", "b")]
        self.serve(texts[0])
        used = []
        for i in range(rounds):
            self.reload(texts[(i + 1) % 2])
            if i in (min(5, rounds - 2), rounds - 1):
                wait_for(lambda: self.stream("stays")["connections"] > i, "reconnects")
                used.append(self.threads_and_files())
        self.assertLessEqual(abs(used[1][0] - used[0][0]) + abs(used[1][1] - used[0][1]), 6, used)
        self.stop()

    def threads_and_files(self):
        process = pathlib.Path(f"/proc/{self.process.pid}")
        return [len(list((process / folder).iterdir())) for folder in ("task", "fd")]

    def test_check_and_wrong_usage(self):
        self.config.write_text(self.streams("a", "b"))
        check = [PROGRAM, "serve", "--config", self.config, "--check"]
        self.assertIn(b"2 streams", subprocess.run(check, capture_output=True, check=True).stdout)
        shares = [subprocess.run([*check, "--shard", f"{i}/2"], capture_output=True, check=True).stdout
                  for i in (1, 2)]
        self.assertEqual(sum(int(re.search(rb": (\d+) stream", share)[1]) for share in shares), 2)
        for arguments in (["--config", "nowhere.yaml"], ["--config", self.config, "--listen", "x:1"],
                          ["--config", self.config, "--shard", "3/2"]):
            self.assertEqual(subprocess.run([PROGRAM, "serve", *arguments], capture_output=True).returncode, 2)

    def test_the_server_survives_its_clients(self):
        self.serve(self.streams("a"))
        address = ("127.0.0.1", self.port)
        for request in (b"\r\n\r\n", b"GET\r\n\r\n", b"GET / HTTP/9.9\r\n\r\n", b"\x00" * 5000, b"GET /" + b"a" * 20000,
                        b"GET / HTTP/1.1\r\n" + b"X: y\r\n" * 5000 + b"\r\n", b"GET /../../etc/passwd HTTP/1.0\r\n\r\n",
                        b"POST /metrics HTTP/1.1\r\nContent-Length: 99999999999999999999\r\n\r\n"):
            with socket.create_connection(address) as client, contextlib.suppress(OSError):
                client.sendall(request)
                client.settimeout(5)
                self.assertNotIn(b" 200 ", client.recv(4096)[:20])
        slow = [socket.create_connection(address) for _ in range(200)]
        for client in slow:
            client.sendall(b"GET /healthz HT")
        self.assertEqual(self.get("/healthz"), b"ok\n")
        for client in slow:
            client.close()
        with self.assertRaises(urllib.error.HTTPError) as answer:
            self.get("/streams/b/hour")
        self.assertEqual(answer.exception.code, 404)
        self.assertEqual(self.get("/healthz"), b"ok\n")
        wait_for(lambda: self.thumbnail(), "thumbnail")
        self.stop()

    def thumbnail(self):
        return self.get("/streams/a/thumbnail").startswith(b"\xff\xd8")

    def test_webhooks_deliver_all_in_order_whatever_the_other_side_does(self):
        native, alertmanager = Receiver([503, 500, 429]), Receiver()
        self.serve(self.streams("a", graph="color=black:s=64x64:r=25:d=2", more=f"""
webhooks:
  - url: http://127.0.0.1:{native.server_port}/alarms
  - {{url: "http://127.0.0.1:{alertmanager.server_port}/", form: alertmanager}}
  - {{url: "http://127.0.0.1:{free_port(socket.SOCK_STREAM)}", queue: 1}}
defaults: {{grace: 0s}}
"""))
        wait_for(lambda: native.posted and self.told().count("-black") >= 1, "alarms")
        self.stop()
        self.assertEqual([body for _, body in native.posted], self.alarms())
        self.assertEqual({path for path, _ in native.posted}, {"/alarms"})
        alerts = [alert for _, body in alertmanager.posted for alert in body]
        self.assertEqual({path for path, _ in alertmanager.posted}, {"/api/v2/alerts"})
        self.assertEqual([alert["labels"]["kind"] for alert in alerts], [a["kind"] for a in self.alarms()])
        self.assertEqual(alerts[0]["labels"], {"alertname": "ZelFault", "stream": "a", "site": "north",
                                               "kind": self.alarms()[0]["kind"], "severity": "critical"})
        self.check_alarms()

    @unittest.skipUnless(shutil.which("prometheus") and shutil.which("prometheus-alertmanager"), "not installed")
    def test_prometheus_and_alertmanager_tell_of_a_fault(self):
        receiver, deploy = Receiver(), pathlib.Path(os.environ["ZEL_DEPLOY"]) / "prometheus"
        clip = self.folder / "black.ts"
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "color=black:s=160x120:r=5:d=600", clip], check=True)
        self.serve(f"streams: [{{name: a, input: '{clip}', audio: false, grace: 0s}}]")
        prometheus, alertmanager = (free_port(socket.SOCK_STREAM) for _ in range(2))
        ports = {"9633": self.port, "9093": alertmanager, "8080": receiver.server_port}
        for file in deploy.iterdir():
            text = re.sub(r"(?<=127.0.0.1:)(\d+)", lambda port: str(ports[port[1]]), file.read_text())
            text = re.sub(r"(_interval|group_wait): (5s|30s|1m)", r"\1: 1s", text)
            (self.folder / file.name).write_text(text)
        for words in (["prometheus-alertmanager", "--config.file=alertmanager.yml", "--storage.path=am",
                       f"--web.listen-address=127.0.0.1:{alertmanager}", "--cluster.listen-address="],
                      ["prometheus", "--config.file=prometheus.yml", "--storage.tsdb.path=tsdb",
                       f"--web.listen-address=127.0.0.1:{prometheus}"]):
            server = subprocess.Popen(words, cwd=self.folder, stderr=subprocess.DEVNULL)
            self.addCleanup(lambda server=server: (server.kill(), server.wait()))
        _, told = wait_for(lambda: receiver.posted, "an alert")[0]
        self.assertEqual(told["alerts"][0]["annotations"], {"summary": "black on a"})


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
"""The plug-in in GST_PLUGIN_PATH as the tools of GStreamer meet it."""
import subprocess
import unittest


def run(*words):
    return subprocess.run(words, check=True, text=True, stdout=subprocess.PIPE, timeout=120).stdout


def told(pipeline):
    """The plug-in's messages, in order."""
    return [line.partition("): ")[2] for line in run("gst-launch-1.0", "-m", *pipeline.split()).splitlines()
            if "(element): zel-" in line]


class Launch(unittest.TestCase):
    def test_black_is_raised_and_cleared(self):
        raised, cleared, heartbeat = told("videotestsrc pattern=black num-buffers=250 ! zelvideo ! fakesink")
        self.assertRegex(raised, r"^zel-event-raised, kind=\(string\)black, tier=\(string\)fault, running-time=\(guint64\)0,")
        self.assertRegex(cleared, r"^zel-event-cleared, kind=\(string\)black, .*duration=\(guint64\)8333333333, "
                                  r"share=\(double\)1, open-at-end=\(boolean\)true, counts=\(boolean\)true, value=\(double\)1,")
        self.assertRegex(heartbeat, r"^zel-heartbeat, sequence=\(guint64\)0, .*buffers=\(guint64\)250, skipped=\(guint64\)0,")

    def test_both_elements_stand_in_one_pipeline(self):
        lines = told("videotestsrc num-buffers=100 ! video/x-raw,format=NV12 ! zelvideo heartbeat-interval=0 ! fakesink "
                     "audiotestsrc wave=silence num-buffers=200 ! audio/x-raw,format=F32LE ! zelaudio ! queue ! fakesink")
        self.assertEqual([line.split(",")[0:2] for line in lines if "mute" in line][:2],
                         [["zel-event-raised", " kind=(string)mute"], ["zel-event-cleared", " kind=(string)mute"]])

    def test_inspect_tells_of_kinds_and_rules(self):
        text = run("gst-inspect-1.0", "zelvideo")
        for words in ("Filter/Analyzer/Video", "I420, (string)NV12", "freeze-min          : Seconds that the shortest event lasts",
                      "PLAYING state", "heartbeat-interval"):
            self.assertIn(words, text)
        self.assertIn("clipping", run("gst-inspect-1.0", "zelaudio"))


if __name__ == "__main__":
    unittest.main()

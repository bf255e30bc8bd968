#!/usr/bin/python3
"""Opens the wall of `zel-monitor serve` in a headless Chromium. ZEL_IMAGES names a folder for pictures of it."""
import os
import pathlib
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By

from zel_monitor_serve_support import MOVING, ServeTest, wait_for


class Wall(ServeTest):
    @classmethod
    def setUpClass(cls):
        options = webdriver.ChromeOptions()
        for argument in ("headless=new", "no-sandbox", "disable-gpu", "disable-dev-shm-usage"):
            options.add_argument(f"--{argument}")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        cls.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        cls.addClassCleanup(cls.browser.quit)

    def names(self):
        return self.script("return [...document.querySelectorAll('.tile .name')].map((e) => e.textContent)")

    def script(self, text):
        return self.browser.execute_script(text)

    def resize(self, width, height):
        metrics = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 500}
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", metrics)

    def picture(self, name):
        if folder := os.environ.get("ZEL_IMAGES"):
            (pathlib.Path(folder) / f"{name}.png").write_bytes(self.browser.get_screenshot_as_png())

    def test_alarms_come_first_with_pictures_and_lead_to_the_last_hour(self):
        awkward = "a <b>&'\\"
        self.serve(f"""
defaults: {{grace: 1s, rules: {{no-signal: {{min: 1s}}}}}}
streams:
  - {{name: zulu, input: "udp://127.0.0.1:9"}}
  - {{name: "a <b>&'\\\\", format: lavfi, input: "testsrc2=r=25,{MOVING},realtime", labels: {{site: north}}}}
  - {{name: demo, input: "demo:"}}
""")
        self.resize(1280, 800)
        self.browser.get(f"http://127.0.0.1:{self.port}/")
        wait_for(lambda: self.names()[:1] == ["zulu"], "the stream with an alarm comes first")
        self.assertIn(awkward, self.names())
        seen = "return [...document.querySelectorAll('.tile img')].filter((i) => i.naturalWidth > 0 && !i.hidden).length"
        wait_for(lambda: self.script(seen) == 2, "pictures of what is up")
        wait_for(lambda: self.script("return document.querySelectorAll('.tile .alarm.critical').length") >= 2, "alarms")
        self.resize(1000, 320)
        self.picture("wall-light")
        self.script("document.getElementById('theme').click()")
        self.assertEqual(self.script("return document.documentElement.dataset.theme"), "dark")
        self.picture("wall-dark")
        self.resize(390, 800)
        self.assertLessEqual(self.script("return document.documentElement.scrollWidth"), 390)
        self.picture("wall-phone")
        self.resize(1280, 800)
        search = self.browser.find_element(By.ID, "search")
        search.send_keys("site=north")
        wait_for(lambda: self.names() == [awkward], "only what was searched for")
        self.browser.find_element(By.CSS_SELECTOR, ".tile").click()
        wait_for(lambda: "the hour before" in self.browser.title, "the last hour")
        wait_for(lambda: self.browser.find_elements(By.CSS_SELECTOR, "#timeline svg path"), "its timeline")
        self.browser.back()
        wait_for(self.names, "the wall again")
        self.assertEqual(self.browser.get_log("browser"), [])
        self.process.kill()
        wait_for(lambda: self.browser.find_element(By.ID, "lost").is_displayed(), "a service that is away")


if __name__ == "__main__":
    unittest.main()

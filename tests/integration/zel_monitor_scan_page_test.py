#!/usr/bin/python3
"""Opens the page of `zel-monitor scan --html` in a headless Chromium."""
import re
import unittest

from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

from zel_monitor_scan_support import ScanTest, run

VIDEO = "testsrc=s=320x240:r=25:d=12,hue=h=360*t,drawbox=t=fill:c=black:enable='between(t,2,4.99)'"
SOUND = "aevalsrc=sin(2800*t)*(lt(t\\,7)+gte(t\\,10)):s=48000:d=12"


class Page(ScanTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        options = webdriver.ChromeOptions()
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage"):
            options.add_argument(argument)
        options.add_argument("--window-size=1280,1400")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        cls.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        cls.addClassCleanup(cls.browser.quit)

        clip = cls.clip("clip <b>&.mkv", "-f lavfi -i", VIDEO, "-f lavfi -i", SOUND, "-c:v mpeg4 -c:a pcm_s16le")
        cls.page = cls.folder / "page.html"
        done = run("scan", "-q", clip, clip, "--html", cls.page, "--fail-on", "black=1s")
        assert done.returncode == 1, done.stderr

    def setUp(self):
        self.browser.get(self.page.as_uri())
        self.find("#timeline svg path")

    def tearDown(self):
        self.assertEqual(self.browser.get_log("browser"), [])

    def wait(self, condition, message=""):
        """Waits, also while the chart is being drawn anew."""
        passing = (StaleElementReferenceException, IndexError)
        return WebDriverWait(self.browser, 60, ignored_exceptions=passing).until(condition, message)

    def find(self, selector):
        return self.wait(lambda b: b.find_element(By.CSS_SELECTOR, selector))

    def texts(self, selector):
        return [element.text for element in self.browser.find_elements(By.CSS_SELECTOR, selector)]

    def bar(self, kind):
        """The bars of one lane, found by the lane's colour."""
        colour = self.browser.execute_script(
            "return [...document.querySelectorAll('#totals tr')].filter(r => r.cells[0].innerText.trim() === arguments[0])"
            ".map(r => r.querySelector('.mark').style.backgroundColor)[0]",
            kind,
        )
        return [
            path
            for path in self.browser.find_elements(By.CSS_SELECTOR, "#timeline svg path")
            if path.value_of_css_property("fill") == colour
        ]

    def width(self, element):
        return self.browser.execute_script("return arguments[0].getBoundingClientRect().width", element)

    def test_opens_alone(self):
        self.assertEqual(self.browser.execute_script("return performance.getEntriesByType('resource').length"), 0)
        self.assertIsNone(re.search(r"""(?:src|href)=["']?https?:""", self.page.read_text()))
        self.assertTrue(self.find("#title").text.endswith("clip <b>&.mkv"))
        self.assertIn("FAIL: black for 3.000 s", self.find("#verdict").text)

    def test_has_a_lane_per_kind_and_curves_on_the_same_axis(self):
        labels = self.texts("#timeline svg text")
        for label in ("black", "freeze", "low-voice", "stall", "mean luma", "audio level", "voice share"):
            self.assertIn(label, labels)
        for kind in ("black", "mute"):
            self.assertEqual(len(self.bar(kind)), 1, kind)
        self.assertAlmostEqual(self.width(self.bar("black")[0]), self.width(self.bar("mute")[0]), delta=3)

    def test_hovering_shows_the_times_of_an_event(self):
        for kind, start, end in (("black", "0:00:02.000", "0:00:05.000"), ("mute", "0:00:07.000", "0:00:10.000")):
            ActionChains(self.browser).move_to_element(self.bar(kind)[0]).perform()
            self.wait(
                lambda _: any(start in tip and end in tip and kind in tip for tip in self.texts(".tip")), kind
            )

    def test_hovering_over_a_curve_shows_its_value(self):
        label = self.browser.find_element(By.XPATH, "//*[name()='text'][.='mean luma']")
        ActionChains(self.browser).move_to_element_with_offset(label, 300, 0).perform()
        self.wait(lambda _: any("mean luma" in tip for tip in self.texts(".tip")))

    def test_shows_the_first_picture_of_each_event(self):
        loaded = self.browser.execute_script(
            "const images = [...document.querySelectorAll('#gallery img')];"
            "return Promise.all(images.map(async (i) => { i.loading = 'eager'; await i.decode(); return i.naturalWidth; }));"
        )
        self.assertEqual(len(loaded), len(self.texts("#events tbody tr")))
        self.assertEqual(set(loaded), {160})
        self.assertIn("black\n0:00:02.000, 3.000 s", self.texts("#gallery figcaption"))

    def test_says_how_many_events_have_no_picture(self):
        self.assertFalse(self.find("#lacking").is_displayed())
        bare = self.folder / "bare.html"
        bare.write_text(re.sub(r'"thumbnails":\[[^]]+\]', '"thumbnails":[]', self.page.read_text()))
        self.browser.get(bare.as_uri())
        self.find("#timeline svg path")
        events = len(self.texts("#events tbody tr"))
        self.assertEqual(self.find("#lacking").text, f"No picture was at hand for {events} of {events} events.")

    def test_choosing_an_event_zooms_to_it(self):
        before = self.width(self.bar("black")[0])
        self.browser.find_element(By.XPATH, "//div[@id='events']//tr[contains(., 'black')]").click()
        self.wait(lambda _: self.width(self.bar("black")[0]) > 1.5 * before)
        self.find("#whole").click()
        self.wait(lambda _: abs(self.width(self.bar("black")[0]) - before) < 2)

    def test_is_light_or_dark(self):
        body = self.find("body")
        seen = {body.value_of_css_property("background-color")}
        self.find("#theme").click()
        seen.add(body.value_of_css_property("background-color"))
        self.assertEqual(len(seen), 2)

    def test_several_inputs_can_be_chosen(self):
        self.assertEqual(len(self.texts("#overview tbody tr")), 2)
        self.browser.find_elements(By.CSS_SELECTOR, "#overview tbody tr")[1].click()
        self.assertEqual(self.find("#inputs").get_property("value"), "1")

    def test_time_before_the_beginning_has_a_sign(self):
        page = self.page.read_text()
        self.assertIn('"start_s":2.0,', page)
        early = self.folder / "early.html"
        early.write_text(page.replace('"start_s":2.0,', '"start_s":-61.5,'))
        self.browser.get(early.as_uri())
        self.find("#timeline svg path")
        self.assertIn("-0:01:01.500", self.find("body").text)


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/python3
"""Opens the page of `zel-monitor scan --html` in a headless Chromium."""
import json
import re
import unittest

from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.common.actions.wheel_input import ScrollOrigin
from selenium.webdriver.support.ui import WebDriverWait

from zel_monitor_scan_support import MOVING, ScanTest, run

VIDEO = "testsrc=s=320x240:r=25:d=12,hue=h=360*t,drawbox=t=fill:c=black:enable='between(t,2,4.99)'"
SOUND = "aevalsrc=sin(2800*t)*(lt(t\\,7)+gte(t\\,10)):s=48000:d=12"
DATA = re.compile(r'(<script id="data" type="application/json">)(.*?)(</script>)', re.DOTALL)


class Page(ScanTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        options = webdriver.ChromeOptions()
        for argument in ("headless=new", "no-sandbox", "disable-gpu", "disable-dev-shm-usage"):
            options.add_argument(f"--{argument}")
        options.add_argument("--force-prefers-reduced-motion")  # clicks do not wait for the page to come to rest
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        cls.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        cls.addClassCleanup(cls.browser.quit)

        clip = cls.clip("clip <b>&.mkv", "-f lavfi -i", VIDEO, "-f lavfi -i", SOUND, "-c:v mpeg4 -c:a pcm_s16le")
        good = cls.clip_of("a_recording_with_a_long_name_and_no_space_in_it_2024-05-03.mkv", MOVING, "-t 1 -c:v mpeg4")
        text = cls.folder / "notes.txt"
        text.write_text("no video\n")
        cls.page = cls.folder / "page.html"
        done = run("scan", "-q", clip, good, text, "--html", cls.page, "--fail-on", "black=1s", "--also", "high-voice")
        assert done.returncode == 3, done.stderr

    def setUp(self):
        self.resize(1280, 1600)
        self.open()

    def tearDown(self):
        self.assertEqual(self.browser.get_log("browser"), [])

    def open(self, fragment="", page=None):
        self.browser.get("about:blank")  # or a new fragment would only be a step within the page
        self.browser.get((page or self.page).as_uri() + fragment)
        self.find("#timeline svg path")

    def open_changed(self, change):
        """Opens a copy of the page whose data went through `change(report, kinds)`."""

        def changed(match):
            data = json.loads(match[2])
            change(data["report"], data["kinds"])
            return match[1] + json.dumps(data).replace("<", "\\u003c") + match[3]

        copy = self.folder / "changed.html"
        copy.write_text(DATA.sub(changed, self.page.read_text(), count=1))
        self.open(page=copy)

    def resize(self, width, height):
        metrics = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 500}
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", metrics)

    def wait(self, condition, message=""):
        """Waits, also while the chart is being drawn anew."""
        passing = (StaleElementReferenceException, IndexError)
        return WebDriverWait(self.browser, 60, ignored_exceptions=passing).until(condition, message)

    def find(self, selector):
        return self.wait(lambda b: b.find_element(By.CSS_SELECTOR, selector))

    def texts(self, selector):
        return [element.text for element in self.browser.find_elements(By.CSS_SELECTOR, selector)]

    def link(self, selector, text):
        """The first link in there with this text."""
        links = self.browser.find_elements(By.CSS_SELECTOR, f"{selector} a")
        return next(link for link in links if link.text == text)

    def bar(self, kind):
        """The bars of one lane, found by the lane's colour."""
        colour = self.find(f"#filter [data-kinds='{kind}'] .mark").value_of_css_property("background-color")
        paths = self.browser.find_elements(By.CSS_SELECTOR, "#timeline svg path")
        fills = self.browser.execute_script("return arguments[0].map((p) => getComputedStyle(p).fill)", paths)
        return [path for path, fill in zip(paths, fills) if fill == colour.replace("rgba", "rgb").replace(", 1)", ")")]

    def width(self, element):
        return self.browser.execute_script("return arguments[0].getBoundingClientRect().width", element)

    def wait_for_view(self, start, end):
        """Waits until the chart shows this span."""
        script = (
            "const [zoom] = document.getElementById('timeline').chart.getOption().dataZoom;"
            "return [zoom.startValue, zoom.endValue];"
        )
        seen = lambda b: b.execute_script(script)
        near = lambda b: all(abs(a - e) < 0.02 for a, e in zip(seen(b), (start, end)))
        self.wait(near, f"not {start} to {end} but {seen(self.browser)}")

    def test_opens_alone(self):
        self.assertEqual(self.browser.execute_script("return performance.getEntriesByType('resource').length"), 0)
        self.assertIsNone(re.search(r"""(?:src|href)=["']?https?:""", self.page.read_text()))
        self.assertTrue(self.find("#title").text.endswith("clip <b>&.mkv"))
        self.assertTrue(self.find("#facts").text.startswith("Matroska/WebM"))

    def test_begins_with_the_verdict_on_all_inputs(self):
        self.assertIn("3 inputs: 1 not analysed to the end, 1 failed, 1 passed", self.find("#verdict").text)
        self.assertIn("exit status 3", self.find("#verdict").text)
        self.assertEqual(self.find("#limits").text, "Limits: black from 1 s")
        self.assertEqual(self.texts("#inputs td .badge"), ["! INCOMPLETE", "\u2717 FAIL", "\u2713 PASS"])
        self.assertIn("Not analysed to its end", self.texts("#inputs tbody tr")[0])
        self.assertLess(self.find("#inputs").location["y"], self.find("#title").location["y"])
        self.link("#inputs", "black for 3.000 s at 0:00:02.000 (limit 1 s)").click()
        self.wait_for_view(0.5, 6.5)
        self.browser.find_elements(By.CSS_SELECTOR, "#inputs tbody tr")[2].click()
        self.assertTrue(self.find("#title").text.endswith("2024-05-03.mkv"))
        self.assertEqual(self.find("#choice").get_property("value"), "1")
        self.browser.back()
        self.wait_for_view(0.5, 6.5)

    def test_has_a_lane_per_kind_and_curves_on_the_same_axis(self):
        labels = self.texts("#timeline svg text")
        for label in ("black", "mute", "high-voice", "mean luma", "audio level", "voice share"):
            self.assertIn(label, labels)
        for kind in ("black", "mute"):
            self.assertEqual(len(self.bar(kind)), 1, kind)
        self.assertAlmostEqual(self.width(self.bar("black")[0]), self.width(self.bar("mute")[0]), delta=3)

    def test_tells_what_was_measured(self):
        self.assertRegex(self.find("#facts").text, r"loudness -?\d+\.\d LUFS, short-term at most .* true peak .* dBTP")
        self.open("#input=1&event=black@2")
        self.assertRegex(self.find("#event-text").text, r"share of the frame that is black: 1 \(limit 0\.9\)")

    def test_hovering_shows_the_times_of_an_event_and_the_value_of_a_curve(self):
        for kind, start, end in (("black", "0:00:02.000", "0:00:05.000"), ("mute", "0:00:07.000", "0:00:10.000")):
            ActionChains(self.browser).move_to_element(self.bar(kind)[0]).perform()
            self.wait(
                lambda _: any(all(text in tip for text in (start, end, kind, "(limit ")) for tip in self.texts(".tip")), kind
            )
        label = self.browser.find_element(By.XPATH, "//*[name()='text'][.='mean luma']")
        ActionChains(self.browser).move_to_element_with_offset(label, 300, 0).perform()
        self.wait(lambda _: any("mean luma" in tip for tip in self.texts(".tip")))

    def test_shows_the_first_frame_of_each_event_or_says_how_many_are_lacking(self):
        loaded = self.browser.execute_script(
            "const images = [...document.querySelectorAll('#gallery img')];"
            "images.forEach((image) => (image.loading = 'eager'));"
            "return Promise.all(images.map((image) => image.decode().then(() => image.naturalWidth)));"
        )
        events = len(self.texts("#events tbody tr"))
        self.assertEqual(loaded, [160] * events)
        self.assertIn("black\n0:00:02.000, 3.000 s", self.texts("#gallery .frame"))
        self.assertFalse(self.find("#lacking").is_displayed())
        bare = self.folder / "bare.html"
        bare.write_text(re.sub(r'"thumbnails":\[[^]]+\]', '"thumbnails":[]', self.page.read_text()))
        self.open(page=bare)
        self.assertEqual(self.find("#lacking").text, f"No frame was at hand for {events} of {events} events.")

    def test_an_event_is_zoomed_to_and_its_links_lead_there_again(self):
        before = self.width(self.bar("black")[0])
        self.link("#events", "black").click()
        self.wait(lambda _: self.width(self.bar("black")[0]) > 1.5 * before)
        self.assertIn("0:00:02.000 to 0:00:05.000", self.find("#event-text").text)
        copied = self.find("#copy").get_attribute("href")
        self.find("#to-start").click()
        self.wait_for_view(0, 4)
        self.find("#to-end").click()
        self.wait_for_view(3, 7)
        self.find("#whole").click()
        self.wait_for_view(0, 12)
        end = self.link("#events", "0:00:05.000").get_attribute("href")
        for link, view in ((copied, (0.5, 6.5)), (end, (3, 7))):
            self.open("#" + link.split("#")[1])
            self.wait_for_view(*view)
            self.assertEqual(len(self.texts("#events tr[aria-current]")), 1)

    def test_a_link_leads_to_a_time(self):
        for fragment, view in (
            ("#t=3,4.5", (3, 4.5)),
            ("#input=1&t=0:00:08", (6, 10)),
            ("#input=1&event=mute@8", (5.5, 11.5)),
            ("#input=9&t=x,,&event=@&hide=%", (0, 12)),
        ):
            self.open(fragment)
            self.wait_for_view(*view)
        self.open("#input=2")
        self.assertTrue(self.find("#title").text.endswith("2024-05-03.mkv"))

    def test_kinds_can_be_hidden_everywhere_and_stay_hidden(self):
        def shown(kind):
            parts = ("#timeline svg text", "#gallery .frame", "#events tbody tr")
            return [any(text.startswith(kind) for text in self.texts(part)) for part in parts]

        self.assertEqual(shown("black"), [True] * 3)
        self.find("#filter [data-kinds='black']").click()
        self.assertEqual(shown("black") + shown("mute"), [False] * 3 + [True] * 3)
        self.wait(lambda b: b.current_url.endswith("#input=1&hide=black"))
        self.browser.refresh()
        self.find("#timeline svg path")
        self.assertEqual(shown("black"), [False] * 3)
        self.browser.find_elements(By.CSS_SELECTOR, "#filter .source")[1].click()
        self.assertEqual(shown("mute") + shown("high-voice"), [False] * 6)
        self.find("#filter [data-kinds='black']").click()
        self.assertEqual(shown("black"), [True] * 3)

    def test_the_chart_answers_the_keyboard(self):
        chart = self.find("#timeline")
        self.browser.execute_script("arguments[0].focus()", self.find("#filter button:last-child"))
        ActionChains(self.browser).send_keys(Keys.TAB * 3).perform()
        while self.browser.switch_to.active_element != chart:
            ActionChains(self.browser).send_keys(Keys.TAB).perform()
        for keys, view in (
            ("+", (2, 10)),
            (Keys.ARROW_RIGHT, (2.8, 10.8)),
            (Keys.END, (4, 12)),
            (Keys.HOME, (0, 8)),
            ("-", (0, 12)),
        ):
            chart.send_keys(keys)
            self.wait_for_view(*view)
        starts = [row.split()[1] for row in self.texts("#events tbody tr")]
        chart.send_keys("nnp")
        self.assertIn(f"{starts[0]} to", self.find("#event-text").text)
        chart.send_keys("n" * (len(starts) + 1))
        self.assertIn(f"{starts[-1]} to", self.find("#event-text").text)
        chart.send_keys("e")
        self.wait_for_view(8, 12)
        chart.send_keys("0")
        self.wait_for_view(0, 12)
        self.wait(lambda b: b.current_url.endswith("&t=0,12"))

    def test_the_wheel_scrolls_the_page_and_zooms_with_ctrl(self):
        place = lambda: self.browser.execute_script("return scrollY")
        self.resize(1280, 600)
        self.browser.execute_script("document.getElementById('timeline').scrollIntoView()")
        before = place()
        chart = ScrollOrigin.from_element(self.bar("mute")[0])
        ActionChains(self.browser).scroll_from_origin(chart, 0, -100).perform()
        self.wait(lambda _: place() == before - 100)
        self.wait_for_view(0, 12)
        zoom = ActionChains(self.browser).key_down(Keys.CONTROL).scroll_from_origin(chart, 0, -100)
        zoom.key_up(Keys.CONTROL).perform()
        self.wait(lambda b: "t=" in b.current_url)

    def test_fits_a_phone(self):
        self.resize(390, 844)
        self.open("#input=1&event=black@2")
        self.assertEqual(self.browser.execute_script("return document.documentElement.scrollWidth"), 390)
        for link in self.browser.find_elements(By.CSS_SELECTOR, "#inputs td > a, #event .tools > *"):
            self.assertLessEqual(link.rect["x"] + link.rect["width"], 390, link.text)

    def test_is_light_or_dark(self):
        body = self.find("body")
        seen = {body.value_of_css_property("background-color")}
        self.find("#theme").click()
        seen.add(body.value_of_css_property("background-color"))
        self.assertEqual(len(seen), 2)

    def test_shows_kinds_it_was_not_made_for(self):
        def change(report, kinds):
            kinds.append({"name": "dub", "colour": "#123456", "source": "subtitles", "unit": "s", "meaning": "a test"})
            for one in report["inputs"]:
                one["totals"]["dub"] = one["totals"]["black"]
                one["events"] += [{**event, "kind": "dub"} for event in one["events"] if event["kind"] == "black"]

        self.open_changed(change)
        self.assertIn("subtitles", self.texts("#filter .source"))
        self.assertEqual(self.bar("dub")[0].get_attribute("fill"), "#123456")
        self.assertIn("dub", self.texts("#events td:first-child"))

    def test_many_events_are_shown_page_by_page(self):
        def change(report, kinds):
            one = report["inputs"][0]
            one["events"] = [{**one["events"][0], "start_s": i, "end_s": i + 0.5} for i in range(3000)]

        self.open_changed(change)
        rows = lambda: [row.split()[1] for row in self.texts("#events tbody tr")]
        self.assertLessEqual(len(rows()), 500)
        self.find("#events [data-page='1']").click()
        self.assertEqual(rows()[0], "0:03:20.000")
        self.find("#timeline").send_keys("0p")
        self.assertIn("0:00:00.000 to", self.find("#event-text").text)
        self.assertEqual(rows()[0], "0:00:00.000")

    def test_time_before_the_beginning_has_a_sign_and_a_place(self):
        self.open_changed(lambda report, kinds: report["inputs"][0]["events"][0].update(start_s=-61.5))
        self.assertIn("-0:01:01.500", self.find("#events").text)
        self.wait_for_view(-61.5, 12)


if __name__ == "__main__":
    unittest.main()

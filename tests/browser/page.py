"""The page in Chromium, as a hand, an eye and a screen reader meet it."""

import json
import math
import time

from selenium import webdriver
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.ui import WebDriverWait

LIMIT_S = 60
MODIFIERS = (Keys.SHIFT, Keys.CONTROL, Keys.ALT)


def open_browser(width, height, touch=False, trace=False, scale=1):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for word in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--force-color-profile=srgb",
                 "--disable-background-timer-throttling", "--disable-renderer-backgrounding",
                 "--disable-backgrounding-occluded-windows", f"--window-size={width},{height}"):
        options.add_argument(word)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", **({"performance": "ALL"} if trace else {})})
    if trace:
        options.add_experimental_option("perfLoggingPrefs", {
            "enableNetwork": False, "enablePage": False, "traceCategories": "toplevel,devtools.timeline,blink.user_timing"})
    driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    driver.set_script_timeout(LIMIT_S)
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": width, "height": height, "deviceScaleFactor": scale, "mobile": touch})
    driver.execute_cdp_cmd("Emulation.setTouchEmulationEnabled", {"enabled": touch, "maxTouchPoints": 5 if touch else 1})
    return driver


class Page:
    def __init__(self, url, width=1180, height=820, wait=True, **more):
        self.driver = open_browser(width, height, **more)
        self.driver.get(url)
        if wait:
            self.wait_for_link("live")

    def close(self):
        self.driver.quit()

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def wait_until(self, truth, what):
        WebDriverWait(self.driver, LIMIT_S, poll_frequency=0.02).until(lambda _: truth(), what)

    def wait_for_link(self, state):
        self.wait_until(lambda: self.run("return document.documentElement.dataset.link") == state, f"link {state}")

    @property
    def serial(self):
        """The number of the last change that the page knows."""
        return int(self.run("return document.documentElement.dataset.serial"))

    @property
    def held(self):
        """How many levels the hand has given that the server has not told yet."""
        return int(self.run("return document.documentElement.dataset.held"))

    def cell(self, source, target):
        return f'[data-cell="{source} {target}"]'

    def name_of_cell(self, source, target):
        return self.find(self.cell(source, target)).get_attribute("aria-label")

    def level_of_cell(self, source, target):
        return self.name_of_cell(source, target).split(": ")[1]

    def point_of_cell(self, source, target):
        """The middle of a cell in the window, of the size without zoom."""
        return self.run("""
            const scroller = document.getElementById('scroller');
            const box = scroller.getBoundingClientRect();
            const header = document.querySelector('#grid [role=rowheader]').offsetWidth;
            const top = document.querySelector('#grid [role=columnheader]').offsetHeight;
            return [box.left + header + (arguments[1] - 0.5) * 44 - scroller.scrollLeft,
                    box.top + top + (arguments[0] - 0.5) * 44 - scroller.scrollTop].map(Math.round);""", source, target)

    def click_cell(self, source, target, times=1):
        x, y = self.point_of_cell(source, target)
        for _ in range(times):
            self._mouse("mousePressed", x, y, 1)
            self._mouse("mouseReleased", x, y, 1)

    def _mouse(self, kind, x, y, count=0, **more):
        self.driver.execute_cdp_cmd("Input.dispatchMouseEvent", {
            "type": kind, "x": x, "y": y, "button": "left" if kind != "mouseMoved" or more.get("buttons") else "none",
            "clickCount": count, "pointerType": "mouse", **more})

    # A mouse, one event at a time.
    def press(self, x, y):
        self._mouse("mouseMoved", x, y)
        self._mouse("mousePressed", x, y, 1, buttons=1)

    def move(self, x, y):
        self._mouse("mouseMoved", x, y, buttons=1)

    def hover(self, x, y):
        self._mouse("mouseMoved", x, y)

    def release(self, x, y):
        self._mouse("mouseReleased", x, y, 1)

    def wheel(self, x, y, notches):
        self._mouse("mouseMoved", x, y)
        self.driver.execute_cdp_cmd("Input.dispatchMouseEvent", {
            "type": "mouseWheel", "x": x, "y": y, "deltaX": 0, "deltaY": -100 * notches, "pointerType": "mouse"})

    def touch(self, kind, *points, **more):
        """One event of fingers: "touchStart", "touchMove" with points, "touchEnd" without."""
        self.driver.execute_cdp_cmd("Input.dispatchTouchEvent", {
            "type": kind, "touchPoints": [{"x": x, "y": y} for x, y in points], **more})

    def tap(self, x, y):
        self.touch("touchStart", (x, y))
        self.touch("touchEnd")

    def double_tap(self, x, y):
        """Two taps, with the times that a finger's would have: the test's own pace does not matter."""
        begin = time.time()
        for kind, seconds in (("touchStart", 0), ("touchEnd", 0.05), ("touchStart", 0.15), ("touchEnd", 0.2)):
            self.touch(kind, *([(x, y)] if kind == "touchStart" else []), timestamp=begin + seconds)

    def middle_of(self, selector):
        return self.run("""
            const box = document.querySelector(arguments[0]).getBoundingClientRect();
            return [box.left + box.width / 2, box.top + box.height / 2].map(Math.round);""", selector)

    def top_of(self, selector):
        return self.run("return document.querySelector(arguments[0]).getBoundingClientRect().top", selector)

    def keys(self, *keys):
        """Types the keys. Shift, Control and Alt are held until the last."""
        actions = ActionChains(self.driver, duration=0)
        held = [key for key in "".join(keys) if key in MODIFIERS]
        for key in held:
            actions.key_down(key)
        actions.send_keys(*(key for key in "".join(keys) if key not in MODIFIERS))
        for key in held:
            actions.key_up(key)
        actions.perform()

    def trace_of(self, act):
        """The browser's trace of what happens while `act` runs. The page must have been opened with `trace`."""
        self.run("performance.mark('begin of the act')")
        act()
        self.run("performance.mark('end of the act')")
        events, marks = [], {}
        while "end of the act" not in marks:  # the driver hands the trace out part by part
            for entry in self.driver.get_log("performance"):
                message = json.loads(entry["message"])["message"]
                if message["method"] == "Tracing.dataCollected":
                    events.append(message["params"])
                    marks[events[-1]["name"]] = events[-1]["ts"]
        return [each for each in events if marks["begin of the act"] <= each["ts"] <= marks["end of the act"]]

    def complaints(self):
        """What the browser had to complain of, of this page."""
        return [entry["message"] for entry in self.driver.get_log("browser") if entry["level"] in ("SEVERE", "WARNING")]


def level_of(text):
    """The number that a level on the page stands for."""
    plain = text.replace("\u2212", "-").replace(" dB", "").replace("muted, ", "")
    return -math.inf if plain in ("silent", "-\u221e") else float(plain)

"""The page for everybody: roles, names and values, keys, contrast, targets, reduced motion."""

import os
import unittest

from selenium.webdriver.common.keys import Keys

from page import Page
from stage import Stage, route

SIZES = ((390, 844), (1180, 820), (1920, 1080))

# The states of the page, each reached by a script.
STATES = {
    "matrix": "document.getElementById('view-matrix').click()",
    "a route selected": "document.getElementById('view-matrix').click();"
                        "document.querySelector('[data-cell=\"1 1\"]').focus()",
    "large cells": "document.getElementById('zoom-large').click()",
    "list": "document.getElementById('view-list').click()",
    "details": "document.getElementById('view-list').click(); document.querySelector('.route-db').click()",
    "help": "document.getElementById('help').click()",
    "add": "document.getElementById('view-list').click(); document.getElementById('list-add').click()",
    "save scene": "document.getElementById('scene-save').click()",
    "locked": "document.getElementById('lock').click()",
}


class Access(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        with open(os.environ["TOLVANE_AXE"], encoding="utf-8") as file:
            cls.axe = file.read()
        cls.stage = Stage(
            routes=[route(1, 1), route(2, 1, 0.5, active=False), route(3, 5, 0)], scenes={"1 Verse": [], "2 Chorus": []},
            **{"inputs": 128, "outputs": 128, "input-names": "Kick,Snare,Vox", "output-names": "Main,,Wedge"})
        cls.addClassCleanup(cls.stage.end)

    def open(self, **more):
        page = Page(self.stage.url, **more)
        self.addCleanup(page.close)
        return page

    @staticmethod
    def violations(page, state):
        page.run(Access.axe)
        return page.driver.execute_async_script("""
            const [state, done] = arguments;
            axe.run(document, { runOnly: ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'] })
              .then(({ violations }) => done(violations.flatMap(({ id, nodes }) =>
                nodes.map(({ html, failureSummary }) => [state, id, html, failureSummary]))));""", state)

    @staticmethod
    def states(page):
        """Brings the page into each of its states, and names it."""
        for state, script in STATES.items():
            page.run("localStorage.clear()")
            page.driver.refresh()
            page.wait_for_link("live")
            page.run(script)
            yield state

    def test_axe_finds_no_violation(self):
        for width, height in SIZES:
            page = self.open(width=width, height=height)
            for state in self.states(page):
                self.assertEqual(self.violations(page, f"{state} at {width}x{height}"), [])

    def test_axe_finds_no_violation_without_a_connection_or_a_token(self):
        stage = Stage(routes=[route(1, 1)], token="a-secret-of-the-stage")
        self.addCleanup(stage.end)
        page = Page(stage.url, wait=False)
        self.addCleanup(page.close)
        page.wait_until(lambda: page.find("#token-dialog").is_displayed(), "the token is asked for")
        self.assertEqual(self.violations(page, "token"), [])
        page.find("#token").send_keys("a-secret-of-the-stage", Keys.ENTER)
        page.wait_for_link("live")
        stage.kill()
        page.wait_for_link("lost")
        self.assertEqual(self.violations(page, "no connection"), [])
        stage.start()

    def test_the_matrix_is_a_grid_of_few_elements(self):
        page = self.open()
        self.assertEqual(page.run("return ['aria-rowcount', 'aria-colcount'].map((name) => document.getElementById('grid').getAttribute(name))"), ["129", "129"])
        page.click_cell(1, 1)
        page.keys(Keys.CONTROL + Keys.END)
        focus = "return ['aria-label', 'role', 'aria-colindex', 'aria-selected'].map((name) => document.activeElement.getAttribute(name))"
        self.assertEqual(page.run(focus), ["Input 128 to output 128: no route", "gridcell", "129", "true"])
        page.keys(Keys.CONTROL + Keys.HOME)
        self.assertEqual(page.run(focus), ["Input 1 Kick to output 1 Main: 0.0 dB", "gridcell", "2", "true"])
        page.keys(Keys.ARROW_DOWN)
        self.assertEqual(page.run(focus)[0], "Input 2 Snare to output 1 Main: muted, \u22126.0 dB")
        self.assertLess(len(page.all("#grid *")), 50)
        self.assertLess(len(page.all("*")), 1500)

    def test_a_screen_reader_gets_the_grid(self):
        page = self.open()
        page.click_cell(2, 3)
        nodes = page.driver.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
        shown = [(node["role"]["value"], node["name"]["value"]) for node in nodes
                 if not node["ignored"] and "name" in node and "role" in node]
        for expected in (("grid", "Patch matrix"), ("gridcell", "Input 2 Snare to output 3 Wedge: no route"),
                         ("rowheader", "Input 2 Snare"), ("columnheader", "Output 3 Wedge"), ("button", "Undo")):
            self.assertIn(expected, shown)

    def test_everything_can_be_reached_and_left_with_the_tab_key(self):
        page = self.open()
        page.run("document.activeElement.blur()")
        reached = []
        for _ in range(60):
            page.keys(Keys.TAB)
            reached.append(page.run("return document.activeElement.id || document.activeElement.dataset.cell || document.activeElement.textContent"))
            if reached.count(reached[0]) > 1:
                break
        for wanted in ("view-list", "help", "lock", "1 Verse", "scene-save", "zoom-large", "1 1", "strip-fader", "strip-db",
                       "strip-mute", "strip-remove", "strip-label"):
            self.assertIn(wanted, reached)

    def test_the_fader_is_a_slider_with_a_value(self):
        page = self.open()
        page.click_cell(2, 1)
        fader = page.find("#strip-fader")
        values = [fader.get_attribute(name) for name in ("role", "aria-valuemin", "aria-valuemax", "aria-valuetext")]
        self.assertEqual(values, ["slider", "-90", "12", "muted, \u22126.0 dB"])
        self.assertAlmostEqual(float(fader.get_attribute("aria-valuenow")), -6.02, places=2)

    def test_targets_are_44_pixels(self):
        for width, height in SIZES:
            page = self.open(width=width, height=height, touch=width < 1900)
            for state in self.states(page):
                small = page.run("""
                    return [...document.querySelectorAll('button, input:not([type=checkbox]), select, [role=slider], [role=gridcell]')]
                      .map((element) => [element, element.getBoundingClientRect()])
                      .filter(([, { width, height }]) => width > 0 && (width < 44 || height < 44))
                      .map(([element, { width, height }]) => `${element.outerHTML.slice(0, 80)} ${width} ${height}`);""")
                self.assertEqual(small, [], f"{state} at {width}x{height}")

    def test_nothing_lies_outside_a_small_screen(self):
        page = self.open(width=390, height=844, touch=True)
        for state in self.states(page):
            outside = page.run("""
                return [...document.querySelectorAll('header *, #scene-save, .bar *, #strip, #strip *, dialog *')]
                  .map((element) => [element, element.getBoundingClientRect()])
                  .filter(([element, { left, right, width, height }]) => width > 1 && height > 1 && (left < 0 || right > innerWidth + 0.5))
                  .map(([element]) => element.outerHTML.slice(0, 80));""")
            self.assertEqual(outside, [], state)

    def test_reduced_motion_moves_nothing(self):
        page = self.open()
        page.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-reduced-motion", "value": "reduce"}]})
        page.find("#lock").click()
        page.run("document.getElementById('lock').classList.add('holding')")
        self.assertEqual(page.run("return document.getAnimations().length"), 0)

    def test_the_drawn_text_has_contrast(self):
        """Colours on the canvas, which axe does not see."""
        page = self.open()
        pairs = {"text": "stage", "name": "stage", "strong": "stage", "onGreen": "green", "onMuted": "muted"}
        colors = page.run("""
            const script = document.querySelector('script').textContent;
            const list = script.match(/const kColors = (\\{[^]*?\\});/)[1];
            return Object.fromEntries([...list.matchAll(/(\\w+): '(#\\w+)'/g)].map(([, name, color]) => [name, color]));""")
        for text, back in [*pairs.items(), ("text", "crosshair"), ("name", "crosshair")]:
            self.assertGreaterEqual(contrast(colors[text], colors[back]), 4.5, f"{text} on {back}")


def contrast(one, other):
    def luminance(color):
        parts = [int(color[at:at + 2], 16) / 255 for at in (1, 3, 5)]
        linear = [part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]
    low, high = sorted((luminance(one), luminance(other)))
    return (high + 0.05) / (low + 0.05)


if __name__ == "__main__":
    unittest.main()

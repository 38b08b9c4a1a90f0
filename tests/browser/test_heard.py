"""What a hand does on the page is heard in the next cycle.

The device is held in a cycle while the hand moves and the page gets its answer. Then one cycle passes, and its sample is the
new gain: the machine's pace does not matter."""

import unittest

from selenium.webdriver.common.keys import Keys

from page import Page, level_of
from stage import Stage, gain_of, route, single


class Heard(unittest.TestCase):
    def setUp(self):
        self.stage = Stage(routes=[route(2, 3, 0.5)])
        self.addCleanup(self.stage.end)

    def open(self, **more):
        page = Page(self.stage.url, **more)
        self.addCleanup(page.close)
        return page

    def heard_after(self, page, act):
        """The outputs' samples in the cycle after the one in which `act` was done."""
        self.stage.hold()
        before = page.serial
        act()
        page.wait_until(lambda: page.serial > before, "the page knows of its change")
        held = self.stage.cycle
        samples = self.stage.step()
        self.assertEqual(self.stage.cycle, held + 1)
        self.stage.go()
        return samples

    def test_a_gain_dragged_on_the_matrix(self):
        page = self.open()
        x, y = page.point_of_cell(2, 3)
        self.assertEqual(self.stage.hold()[2], 0.5)
        self.stage.go()
        page.press(x, y)
        page.move(x, y - 10)  # the hand has taken the gain, and changed nothing
        levels = []
        for moved in (20, 45, 30, -40, -90):
            samples = self.heard_after(page, lambda: page.move(x, y - moved))
            levels.append(level_of(page.level_of_cell(2, 3)))
            self.assertEqual(samples, [0, 0, gain_of(levels[-1]), 0, 0, 0, 0, 0])
        page.release(x, y + 90)
        print("dragged to", levels, end=" ", flush=True)
        self.assertTrue(levels[1] > levels[2] > levels[0] > levels[3] > levels[4])
        self.assertEqual(page.complaints(), [])

    def test_a_drag_is_one_undo_step(self):
        page = self.open()
        x, y = page.point_of_cell(2, 3)
        page.press(x, y)
        for moved in range(5, 60, 5):
            page.move(x, y - moved)
        page.release(x, y - 60)
        page.wait_until(lambda: page.find("#undo").is_enabled(), "there is something to undo")
        page.wait_until(lambda: level_of(page.level_of_cell(2, 3)) > -1, "the drag has ended")
        samples = self.heard_after(page, lambda: page.find("#undo").click())
        self.assertEqual(samples[2], 0.5)

    def test_a_gain_dragged_by_a_finger_in_the_list(self):
        page = self.open(width=390, height=844, touch=True)
        x, y = page.middle_of(".route-fader")
        page.touch("touchStart", (x, y))
        page.touch("touchMove", (x - 20, y))
        for to in (x - 40, x + 5, x - 60):
            samples = self.heard_after(page, lambda: page.touch("touchMove", (to, y)))
            shown = page.find(".route-db").text
            self.assertEqual(samples[2], gain_of(level_of(shown)))
        page.touch("touchEnd")

    def test_the_wheel(self):
        page = self.open()
        page.click_cell(2, 3)
        page.keys("0")
        page.wait_until(lambda: page.level_of_cell(2, 3) == "0.0 dB", "0 dB")
        page.run("document.getElementById('scroller').dispatchEvent(new Event('scroll'))")
        x, y = page.point_of_cell(2, 3)
        page.wheel(x, y, -1)  # it scrolls on for a moment
        page.run("return new Promise((done) => setTimeout(done, 600))")
        self.assertEqual(page.level_of_cell(2, 3), "0.0 dB")
        samples = self.heard_after(page, lambda: page.wheel(x, y, -1))
        self.assertEqual(samples[2], gain_of(-1))

    def test_keys(self):
        page = self.open()
        page.click_cell(2, 3)
        rows = [("0", 0, None), ("-", -1, None), ("+", 0, None), ((Keys.SHIFT, Keys.ARROW_DOWN), -1, None),
                ((Keys.ALT, Keys.ARROW_DOWN), -1.1, None), ("m", None, 0.0), (" ", -1.1, None), (Keys.DELETE, None, 0.0)]
        for keys, decibels, sample in rows:
            samples = self.heard_after(page, lambda: page.keys(*keys))
            self.assertEqual(samples[2], gain_of(decibels) if sample is None else sample, keys)
        samples = self.heard_after(page, lambda: page.keys(Keys.ARROW_DOWN, Keys.ARROW_RIGHT, Keys.ENTER))
        self.assertEqual(samples, [0, 0, 0, 1, 0, 0, 0, 0])

    def test_a_level_in_digits(self):
        page = self.open()
        page.click_cell(2, 3)
        page.keys(Keys.ENTER)
        samples = self.heard_after(page, lambda: page.keys("-7,5", Keys.ENTER))
        self.assertEqual(samples[2], gain_of(-7.5))

    def test_a_double_tap(self):
        page = self.open(touch=True)
        for cell, sample in (((2, 3), 1), ((5, 6), 1)):
            x, y = page.point_of_cell(*cell)
            samples = self.heard_after(page, lambda: page.double_tap(x, y))
            self.assertEqual(samples[cell[1] - 1], sample)

    def test_one_tap_changes_nothing(self):
        page = self.open(touch=True)
        for cell in ((2, 3), (5, 6)):
            page.tap(*page.point_of_cell(*cell))
            page.wait_until(lambda: page.find(page.cell(*cell)).get_attribute("aria-selected") == "true", "selected")
        self.assertEqual(page.serial, 0)

    def test_the_strip(self):
        page = self.open()
        page.click_cell(2, 3)
        rows = [("#strip-zero", 1), ("#strip-up", gain_of(1)), ("#strip-down", 1), ("#strip-mute", 0), ("#strip-mute", 1),
                ("#strip-remove", 0), ("#strip-add", 1), ("#undo", 0), ("#strip-add-silent", 0)]
        for button, sample in rows:
            samples = self.heard_after(page, lambda: page.find(button).click())
            self.assertEqual(samples[2], sample, button)

    def test_the_matrix_scrolls_under_a_finger_and_no_gain_moves(self):
        large = Stage(routes=[route(source, source) for source in range(1, 65)], inputs=64, outputs=64)
        self.addCleanup(large.end)
        page = Page(large.url, touch=True)
        self.addCleanup(page.close)
        x, y = page.point_of_cell(8, 8)
        page.touch("touchStart", (x, y))
        for moved in range(10, 200, 10):
            page.touch("touchMove", (x, y - moved))
        page.touch("touchEnd")
        page.wait_until(lambda: page.run("return document.getElementById('scroller').scrollTop") > 100, "it has scrolled")
        self.assertEqual(page.serial, 0)
        self.assertEqual(large.hold(), [1.0] * 64)
        large.go()


class Scenes(unittest.TestCase):
    def test_a_scene_is_heard_in_the_next_cycle(self):
        stage = Stage(routes=[route(1, 1)], scenes={"1 Verse": [route(1, 2, 0.25)], "2 Chorus": [route(1, 3, 0.75)]})
        self.addCleanup(stage.end)
        page = Page(stage.url)
        self.addCleanup(page.close)
        self.assertEqual([each.text for each in page.all("#scene-list button")], ["1 Verse", "2 Chorus"])
        for button, place, gain in ((0, 1, 0.25), (1, 2, 0.75)):
            stage.hold()
            before = page.serial
            page.all("#scene-list button")[button].click()
            page.wait_until(lambda: page.serial > before, "recalled")
            self.assertEqual(stage.step()[place], single(gain))
            stage.go()
        page.wait_until(lambda: page.all("#scene-list button")[1].get_attribute("aria-current") == "true", "marked")
        page.find("#scene-save").click()
        page.find("#scene-name").clear()
        page.find("#scene-name").send_keys(60 * "\u00fc")  # more than 100 bytes
        page.find("#scene-dialog button.main").click()
        self.assertTrue(page.find("#scene-dialog").is_displayed(), "the name can be shortened")
        page.find("#scene-name").clear()
        page.find("#scene-name").send_keys("3 Bridge")
        page.find("#scene-dialog button.main").click()
        page.wait_until(lambda: len(page.all("#scene-list button")) == 3, "the new scene has a button")


if __name__ == "__main__":
    unittest.main()

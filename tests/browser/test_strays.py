"""What no hand meant changes no level: an old text in a field, a press that ends elsewhere, a route that is there already, a row
that comes to lie under the finger."""

import time
import unittest

from page import Page, level_of
from stage import Stage, gain_of, route


LONG_NAME = "A stage box with a name as long as only the makers of stage boxes would give it"


class Strays(unittest.TestCase):
    def setUp(self):
        self.stage = Stage(routes=[route(1, 1, 0.5), route(2, 2)])
        self.addCleanup(self.stage.end)

    def open(self, **more):
        page = Page(self.stage.url, **more)
        self.addCleanup(page.close)
        return page

    def select(self, page, source, target):
        page.click_cell(source, target)
        self.wait_for_selection(page, source, target)

    @staticmethod
    def wait_for_selection(page, source, target):
        page.wait_until(lambda: page.find(page.cell(source, target)).get_attribute("aria-selected") == "true", "selected")

    def changes_with(self, page, act):
        """How many changes there are after one that `act` makes. What was sent before it has come before it."""
        before = page.serial
        act()
        page.wait_until(lambda: page.serial > before, "the change")
        return page.serial

    def test_a_field_that_nobody_typed_in_writes_into_no_route(self):
        page = self.open()
        for field in ("#strip-db", "#strip-label"):
            self.select(page, 1, 1)
            page.find(field).click()
            self.select(page, 2, 2)
        self.assertEqual(self.changes_with(page, lambda: page.find("#strip-mute").click()), 1)

    def test_what_was_typed_for_a_route_is_not_taken_for_the_next(self):
        page = self.open()
        self.select(page, 1, 1)
        page.find("#strip-db").click()
        page.keys("-3")
        self.assertEqual(self.changes_with(page, lambda: self.select(page, 2, 2)), 1)
        self.stage.hold()
        self.assertEqual(self.stage.step()[:2], [gain_of(-3), 1])
        self.stage.go()
        self.assertEqual(page.find("#strip-db").get_attribute("value"), "0.0")

    def test_a_field_does_not_take_back_what_another_has_set_meanwhile(self):
        page, other = self.open(), self.open()
        for each in (page, other):
            self.select(each, 1, 1)
        page.find("#strip-db").click()
        other.find("#strip-zero").click()
        page.wait_until(lambda: page.level_of_cell(1, 1) == "0.0 dB", "the other's level")
        page.find("#strip-label").click()
        self.assertEqual(page.find("#strip-db").get_attribute("value"), "0.0")
        self.assertEqual(self.changes_with(page, lambda: page.find("#strip-mute").click()), 2)

    def test_a_press_that_ends_elsewhere_leaves_no_drag(self):
        page = self.open()
        self.select(page, 1, 1)
        x, y = page.middle_of("#strip-fader")
        page.press(x, y)
        for left in (20, 100, 400):
            page.move(x - left, y)
        page.release(x - 400, y)
        for up in (0, 10, 60, 120):
            page.hover(x, y - up)
        self.assertEqual(self.changes_with(page, lambda: page.find("#strip-mute").click()), 1)

    def test_after_a_drag_by_finger_other_routes_are_taken(self):
        page = self.open(touch=True)
        x, y = page.point_of_cell(1, 1)
        page.tap(x, y)
        self.wait_for_selection(page, 1, 1)
        # With the times of a hand: the browser takes no tap that follows a drag within milliseconds.
        begin = time.time() - 2
        page.touch("touchStart", (x, y), timestamp=begin)
        for up in (10, 20, 40):
            page.touch("touchMove", (x, y - up), timestamp=begin + up / 100)
        page.touch("touchEnd", timestamp=begin + 0.5)
        page.wait_until(lambda: level_of(page.level_of_cell(1, 1)) > -6, "dragged")
        page.touch("touchStart", page.point_of_cell(2, 2), timestamp=begin + 1.5)
        page.touch("touchEnd", timestamp=begin + 1.55)
        self.wait_for_selection(page, 2, 2)

    def test_the_matrix_stays_in_place_whatever_appears_above_it(self):
        for width, height in ((1920, 1080), (1180, 820), (390, 844)):
            tops = []
            for words in ({"signal": "band"}, {}, {"scenes": {}}, {"scenes": {"Verse": []}}, {"name": LONG_NAME}):
                stage = Stage(routes=[route(1, 1)], **words)
                self.addCleanup(stage.end)
                page = Page(stage.url, width=width, height=height)
                self.addCleanup(page.close)
                page.find("#view-matrix").click()
                if "signal" not in words:
                    page.wait_until(lambda: page.find("#clips").is_displayed(), "the clip")
                tops.append(page.top_of("#scroller"))
                stage.kill()
                page.wait_for_link("lost")
                tops.append(page.top_of("#scroller"))
            self.assertEqual(tops, tops[:1] * 10, width)

    def test_a_route_that_is_there_is_not_added_over(self):
        page = self.open(width=390, height=844, touch=True)
        page.find("#list-add").click()
        page.find("#add-dialog button.main").click()
        page.wait_until(lambda: "already" in page.find("#note").text, "it is told")
        self.assertEqual(self.changes_with(page, lambda: page.all(".route-mute")[1].click()), 1)


if __name__ == "__main__":
    unittest.main()

"""The lock against stray touches."""

import unittest

from selenium.webdriver.common.keys import Keys

from page import Page
from stage import Stage, route


class Lock(unittest.TestCase):
    def setUp(self):
        self.stage = Stage(routes=[route(2, 3)], scenes={"Quiet": []})
        self.addCleanup(self.stage.end)
        self.page = Page(self.stage.url, touch=True)
        self.addCleanup(self.page.close)

    def is_locked(self):
        return self.page.find("#lock").get_attribute("aria-pressed") == "true"

    def wait(self, milliseconds):
        self.page.run("return new Promise((done) => setTimeout(done, arguments[0]))", milliseconds)

    def test_while_locked_no_touch_and_no_key_changes_anything(self):
        page = self.page
        lock = page.middle_of("#lock")
        cell = page.point_of_cell(2, 3)
        page.tap(*cell)
        page.tap(*lock)
        page.wait_until(self.is_locked, "a touch locks")
        for point in (cell, page.point_of_cell(4, 4)):
            page.tap(*point)
            page.tap(*point)
        page.touch("touchStart", cell)
        for moved in range(0, 60, 5):
            page.touch("touchMove", (cell[0], cell[1] - moved))
        page.touch("touchEnd")
        for key in ("m", "0", "-", Keys.DELETE, Keys.ENTER):
            page.keys(key)
        page.tap(*page.middle_of("#scene-list button"))
        page.wait_until(lambda: page.find("#note").text.startswith("Locked"), "a scene says why not")
        for button in ("#strip-zero", "#strip-mute", "#strip-remove", "#save", "#undo"):
            self.assertFalse(page.find(button).is_enabled() if page.find(button).is_displayed() else False, button)
        page.tap(*lock)  # a short touch does not unlock
        self.wait(300)
        self.assertTrue(self.is_locked())
        self.assertEqual(page.serial, 0)
        self.assertEqual(self.stage.hold()[2], 1)
        self.stage.go()

    def test_a_long_touch_unlocks_and_a_reload_does_not(self):
        page = self.page
        page.tap(*page.middle_of("#lock"))
        page.wait_until(self.is_locked, "locked")
        page.driver.refresh()
        page.wait_for_link("live")
        self.assertTrue(self.is_locked())
        page.touch("touchStart", page.middle_of("#lock"))
        page.wait_until(lambda: not self.is_locked(), "unlocked")
        page.touch("touchEnd")
        self.wait(300)
        self.assertFalse(self.is_locked())

    def test_a_key_locks_and_unlocks(self):
        page = self.page
        page.run("document.getElementById('lock').focus()")
        page.keys(Keys.ENTER)
        self.assertTrue(self.is_locked())
        page.keys(Keys.ENTER)
        self.assertFalse(self.is_locked())


if __name__ == "__main__":
    unittest.main()

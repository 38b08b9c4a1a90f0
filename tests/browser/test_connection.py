"""The server goes and comes back; the token; the device's state."""

import unittest

from page import Page
from stage import Stage, route


class Connection(unittest.TestCase):
    def open(self, stage, **more):
        page = Page(more.pop("url", stage.url), **more)
        self.addCleanup(page.close)
        return page

    def make(self, **more):
        stage = Stage(**more)
        self.addCleanup(stage.end)
        return stage

    def test_the_page_comes_back_by_itself_and_shows_the_truth(self):
        stage = self.make(routes=[route(1, 1), route(2, 2)])
        page = self.open(stage)
        self.assertFalse(page.find("#stale").is_displayed())
        stage.kill()
        page.wait_for_link("lost")
        self.assertTrue(page.find("#stale").is_displayed())
        self.assertEqual(page.find("#link").text, "No connection")
        page.click_cell(1, 1)
        page.keys("-")  # there is nobody to send it to
        page.wait_until(lambda: page.find("#note").text == "There is no connection", "the note")
        self.assertEqual(page.level_of_cell(1, 1), "0.0 dB")
        stage.write_patch([route(1, 1, 0.5), route(1, 2, 1, active=False)])
        stage.start()
        page.wait_for_link("live")
        self.assertFalse(page.find("#stale").is_displayed())
        self.assertEqual(page.level_of_cell(1, 1), "\u22126.0 dB")
        self.assertEqual(page.level_of_cell(1, 2), "muted, 0.0 dB")
        self.assertEqual(page.level_of_cell(2, 2), "no route")
        page.keys("-")
        page.wait_until(lambda: page.level_of_cell(1, 1) == "\u22127.0 dB", "an edit is taken again")

    def test_ten_times_in_a_row(self):
        stage = self.make(routes=[route(1, 1)])
        page = self.open(stage)
        for turn in range(10):
            stage.kill()
            page.wait_for_link("lost")
            stage.write_patch([route(1, 1, 1 / (turn + 2))])
            stage.start()
            page.wait_for_link("live")
        self.assertEqual(page.level_of_cell(1, 1), "\u221220.8 dB")

    def test_a_server_that_falls_silent_is_noticed(self):
        stage = self.make(routes=[route(1, 1)])
        page = self.open(stage)
        stage.process.send_signal(19)  # SIGSTOP
        self.addCleanup(stage.process.send_signal, 18)
        page.wait_for_link("lost")
        stage.process.send_signal(18)
        page.wait_for_link("live")

    def test_the_state_of_device_and_connection_is_in_sight_on_every_screen(self):
        stage = self.make(routes=[route(1, 1)], inputs=32, outputs=24)
        for width, height in ((390, 844), (1180, 820), (1920, 1080)):
            page = self.open(stage, width=width, height=height)
            self.assertEqual(page.find("#link").text, "Connected")
            self.assertEqual(page.find("#device-name").text, "Stage Box")
            facts = page.find("#device-facts").text
            for fact in ("0 overloads" if "0 overloads" in facts else "overload", "load ", "48 kHz", "512 frames"):
                self.assertIn(fact, facts)
            self.assertTrue(page.run("""
                return ['link', 'device-name', 'device-facts'].every((id) => {
                  const element = document.getElementById(id);
                  const { left, top, right, bottom } = element.getBoundingClientRect();
                  return left >= 0 && top >= 0 && right <= innerWidth && bottom <= innerHeight && element.scrollWidth <= element.clientWidth;
                });"""))

    def test_the_token_is_asked_for_and_kept_for_the_tab(self):
        stage = self.make(routes=[route(1, 1)], token="a-secret-of-the-stage")
        page = self.open(stage, wait=False)
        page.wait_until(lambda: page.find("#token-dialog").is_displayed(), "the token is asked for")
        page.find("#token").send_keys("a-guess-at-the-secret")
        page.find("#token-dialog button.main").click()
        page.wait_until(lambda: page.find("#token-why").text.startswith("Not accepted"), "a wrong one is refused")
        page.find("#token").clear()
        page.find("#token").send_keys("a-secret-of-the-stage")
        page.find("#token-dialog button.main").click()
        page.wait_for_link("live")
        page.driver.refresh()
        page.wait_for_link("live")
        stage.kill()
        page.wait_for_link("lost")
        stage.start()
        page.wait_for_link("live")

    def test_the_token_of_the_address_is_taken_out_of_it(self):
        stage = self.make(routes=[route(1, 1)], token="a-secret-of-the-stage")
        page = self.open(stage, url=stage.url + "#token=a-secret-of-the-stage")
        self.assertEqual(page.driver.current_url, stage.url)

    def test_nothing_but_the_page_and_its_connection_is_asked_of_anybody(self):
        stage = self.make(routes=[route(1, 1)])
        page = self.open(stage)
        self.assertEqual(page.run("return performance.getEntriesByType('resource').map((entry) => entry.name)"), [])
        self.assertEqual(page.complaints(), [])


if __name__ == "__main__":
    unittest.main()

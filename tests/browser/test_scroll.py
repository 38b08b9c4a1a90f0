"""128 x 128 cells scrolled at 60 frames a second, with full meters and a route in every other cell.

The browser's own trace tells what each frame cost. What counts is the processor time of the page's thread, not the pace of the
machine."""

import statistics
import unittest

from page import Page
from stage import Stage, route

FRAME_MS = 1000 / 60
CELL_PX = 44

SCROLL = """
    const [left, done] = arguments;
    document.getElementById('scroller').scrollTo({ left, behavior: 'instant' });
    const frame = () => new Promise(requestAnimationFrame);
    frame().then(frame).then(frame).then(done);"""

# The color at a point of the cells.
CANVAS_PIXEL = """
    const [x, y] = arguments;
    const left = document.querySelector('#grid [role=rowheader]').offsetWidth;
    const top = document.querySelector('#grid [role=columnheader]').offsetHeight;
    return Array.from(document.getElementById('canvas').getContext('2d').getImageData(left + x, top + y, 1, 1).data);"""


def costs_of_frames(events):
    """The processor time of the page's thread in each frame, in milliseconds: what it did from one frame's begin to the next's.

    The task that draws a frame begins before the frame, so each cost holds one drawing. What came before the first is no frame.
    """
    begins = [each for each in events if each["name"] == "FireAnimationFrame"]
    threads = {(each["pid"], each["tid"]) for each in begins}
    assert len(threads) == 1, "one page draws"
    tasks = sorted((each for each in events if each["name"] == "RunTask" or each["name"] == "ThreadControllerImpl::RunTask"),
                   key=lambda each: each["ts"])
    tasks = [each for each in tasks if (each["pid"], each["tid"]) in threads and "tdur" in each]
    frames = sorted(each["ts"] for each in begins)
    tasks = [each for each in tasks if each["ts"] >= frames[0]]
    costs, at = [], 0
    for until in frames[1:]:
        cost = 0.0
        while at < len(tasks) and tasks[at]["ts"] < until:
            cost += tasks[at]["tdur"] / 1000
            at += 1
        costs.append(cost)
    return costs


class Scroll(unittest.TestCase):
    def test_every_frame_costs_less_than_a_sixtieth_of_a_second(self):
        routes = [route(source, target, 0.5, active=target % 4 != 0)
                  for source in range(1, 129) for target in range(1 + source % 2, 129, 2)]
        stage = Stage(routes=routes, inputs=128, outputs=128, signal="band",
                      **{f"{side}-names": ",".join(f"{side} {n}" for n in range(1, 129)) for side in ("input", "output")})
        self.addCleanup(stage.end)
        for width, height in ((1180, 820), (1920, 1080)):
            self.scroll(stage, width, height)

    def test_the_line_after_the_eighth_channel_is_there_when_the_eighth_is_the_first_in_sight(self):
        stage = Stage(inputs=128, outputs=128)
        self.addCleanup(stage.end)
        page = Page(stage.url)
        self.addCleanup(page.close)

        def line_after(channel, in_sight_px):
            page.driver.execute_async_script(SCROLL, channel * CELL_PX - in_sight_px)
            return page.run(CANVAS_PIXEL, in_sight_px - 1, CELL_PX // 2)

        eighth = line_after(8, CELL_PX + 10)
        self.assertNotEqual(eighth, line_after(7, CELL_PX + 10))
        self.assertEqual(eighth, line_after(8, 10))

    @staticmethod
    def scroll_about(page):
        x, y = page.point_of_cell(6, 6)
        for distance in ((0, -3000), (-3000, 0), (2500, 2500), (-2000, -1500)):
            page.driver.execute_cdp_cmd("Input.synthesizeScrollGesture", {
                "x": x, "y": y, "xDistance": distance[0], "yDistance": distance[1], "speed": 3000, "gestureSourceType": "mouse"})

    def scroll(self, stage, width, height):
        page = Page(stage.url, width=width, height=height, trace=True)
        try:
            costs = costs_of_frames(page.trace_of(lambda: self.scroll_about(page)))
            self.assertGreater(page.run("const { scrollLeft, scrollTop } = document.getElementById('scroller'); return scrollLeft + scrollTop"), 1000)
        finally:
            page.close()
        print(f"{width}x{height}: {len(costs)} frames, median {statistics.median(costs):.2f} ms, worst {max(costs):.2f} ms;", end=" ", flush=True)
        self.assertGreater(len(costs), 30)
        self.assertLess(max(costs), FRAME_MS)


if __name__ == "__main__":
    unittest.main()

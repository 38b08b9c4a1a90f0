"""Draws the page's pictures for the documents, of the program itself with a band on stage."""

import math
import sys

from page import Page
from stage import Stage, route

INPUTS = ["Kick In", "Kick Out", "Snare Top", "Snare Bottom", "Hi-Hat", "Tom 1", "Tom 2", "Floor Tom", "Overhead L",
          "Overhead R", "Bass DI", "Bass Mic", "Guitar L", "Guitar R", "Keys L", "Keys R", "Vox Anna", "Vox Ben",
          "Talkback", "Click", "Playback L", "Playback R", "Room L", "Room R"]
OUTPUTS = ["Main L", "Main R", "Sub", "Wedge Anna", "Wedge Ben", "Wedge Keys", "Ears Drums L", "Ears Drums R",
           "Side Fill L", "Side Fill R", "Broadcast L", "Broadcast R", "Record 1", "Record 2", "Record 3", "Record 4"]


def level(source, target, decibels, active=True):
    return route(source, target, round(10 ** (decibels / 20), 6) if decibels > -math.inf else 0.0, active)


def band():
    mains = [level(source, 1 + source % 2, -6) for source in (9, 10, 13, 14, 15, 16, 21, 22)]
    mains += [level(source, target, decibels) for source, decibels in ((1, -3), (3, -4.5), (11, -6), (17, 0), (18, -1.5)) for target in (1, 2)]
    return mains + [
        level(1, 3, 0), level(11, 3, -4), level(17, 4, 3), level(18, 4, -9), level(15, 4, -12), level(17, 5, -8), level(18, 5, 3),
        level(20, 5, -10, active=False), level(15, 6, 0), level(16, 6, 0), level(17, 6, -12.5), level(20, 7, -6), level(20, 8, -6),
        level(1, 7, -3), level(3, 8, -3), level(5, 7, -14), level(11, 7, -9), level(11, 8, -9), level(17, 9, -20), level(18, 10, -20),
        level(19, 4, -math.inf), level(19, 5, -math.inf), level(23, 11, -16), level(24, 12, -16, active=False), level(1, 13, 0), level(3, 14, 0),
        level(17, 15, 0), level(18, 16, 0)]


def draw(stage, folder, width, height, prepare="", name="", **more):
    page = Page(stage.url, width=width, height=height, touch=width < 1900, **more)
    try:
        page.run("document.fonts.ready")
        if prepare:
            page.run(prepare)
        page.run("return new Promise((done) => setTimeout(done, 1500))")  # until the meters show the sound
        page.driver.save_screenshot(f"{folder}/page-{name}{width}x{height}.png")
    finally:
        page.close()


def main(folder):
    scenes = {f"{n} {name}": band() for n, name in enumerate(("Walk-in", "Verse", "Chorus", "Solo Ben", "Encore"), 1)}
    stage = Stage(routes=band(), scenes=scenes, signal="band", inputs=len(INPUTS), outputs=len(OUTPUTS),
                  **{"input-names": ",".join(INPUTS), "output-names": ",".join(OUTPUTS)})
    try:
        recall = "document.querySelectorAll('#scene-list button')[1].click();"
        draw(stage, folder, 390, 844, recall)
        draw(stage, folder, 1180, 820, recall)
        draw(stage, folder, 1920, 1080, recall)
        draw(stage, folder, 390, 844, "document.getElementById('view-matrix').click()", name="matrix-")
    finally:
        stage.end()


if __name__ == "__main__":
    main(sys.argv[1])

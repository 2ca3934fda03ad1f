"""Saves pictures of the application on a desktop: its icon in each of its looks, and the popover below
it; for tools/screenshots.

    screenshots.py PROGRAM SCALE FOLDER
"""

import os
import pathlib
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))

import harness  # noqa: E402
from desktop import SCREEN, DesktopTestCase, DragSource  # noqa: E402
from PIL import Image  # noqa: E402
from pictures import largePicture  # noqa: E402
from waiting import waitUntil  # noqa: E402


class Screenshots(DesktopTestCase):
    def runTest(self):
        self.environment["QT_SCALE_FACTOR"] = str(self.scale)
        self.environment["HOME"] = str(self.makeFolder("anna"))
        folders = [self.makeFolder("anna/Pictures"), self.makeFolder("anna/Downloads")]
        icon = self.startWithIcon(*folders)
        self.waitUntilWatching(2)
        looks = [self.picture(icon.box())]
        idle = self.look(icon)

        source = DragSource(self, *folders)
        source.drag(*icon.middle())
        source.expect("welcome")
        waitUntil(lambda: self.look(icon) != idle, "a highlighted icon")
        looks.append(self.picture(icon.box()))
        source.drop("dropped")
        self.end(source.process)
        waitUntil(lambda: self.look(icon) == idle, "the idle icon")

        picture = largePicture(self.base).read_bytes()
        names = [folders[0] / f"{number}.png" for number in range(3)]
        for name in names:
            name.write_bytes(picture)
        for name in names:
            os.rename(name, name.with_suffix(".heic"))
        waitUntil(lambda: self.look(icon) != idle, "a busy icon")
        looks.append(self.picture(icon.box()))
        self.saveBeside(looks)
        popover = self.open()
        self.save("desktop-busy", self.around(icon, popover))
        waitUntil(lambda: self.look(icon) == idle, "the idle icon")
        self.pointer("mousemove", popover.x + 10 * self.scale, popover.y + 10 * self.scale)
        self.still()
        self.save("desktop", self.around(icon, popover))

    def around(self, *windows):
        margin = 10 * self.scale
        left = min(window.x for window in windows) - margin
        bottom = max(window.y + window.height for window in windows) + margin
        return (left, 0, SCREEN[0] * self.scale, bottom)

    def saveBeside(self, looks):
        """Saves the looks of the icon: idle, dragged over, busy."""
        width, height = looks[0].size
        icons = Image.new("RGB", (width * len(looks), height))
        for number, look in enumerate(looks):
            icons.paste(look, (number * width, 0))
        icons.save(self.folder / "icons.png")

    def save(self, name, box):
        self.picture(box).save(self.folder / f"{name}.png")


if __name__ == "__main__":
    harness.program = pathlib.Path(sys.argv[1]).resolve()
    Screenshots.scale = int(sys.argv[2])
    Screenshots.folder = pathlib.Path(sys.argv[3])
    result = unittest.TextTestRunner().run(Screenshots())
    sys.exit(0 if result.wasSuccessful() else 1)

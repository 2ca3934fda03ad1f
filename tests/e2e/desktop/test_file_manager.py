"""Folders dragged out of a real file manager, pcmanfm."""

import subprocess

from desktop import SCREEN, DesktopTestCase
from PIL import ImageChops
from waiting import waitUntil

CONFIGURATION = """
[ui]
win_width=600
win_height=400
maximized=0
show_statusbar=0
side_pane_mode=hidden;none
"""


class FileManager(DesktopTestCase):
    def setUp(self):
        super().setUp()
        settings = self.base / ".config" / "pcmanfm" / "default"
        settings.mkdir(parents=True)
        (settings / "pcmanfm.conf").write_text(CONFIGURATION)
        self.pictures = self.makeFolder("pictures")
        self.folders = [self.makeFolder("pictures/first"), self.makeFolder("pictures/второй")]

    def openFileManager(self):
        self.startProgram("pcmanfm", "--no-desktop", self.pictures, stderr=subprocess.DEVNULL)
        search = ["xdotool", "search", "--onlyvisible", "--class", "pcmanfm"]

        def windows():
            found = subprocess.run(search, env=self.environment, capture_output=True, text=True)
            return found.stdout.split()

        waitUntil(windows, "the file manager")
        return windows()[0]

    def selectAll(self, window):
        """Selects what the file manager shows, and returns a place inside of what is selected."""
        self.pointer("mousemove", SCREEN[0] - 1, SCREEN[1] - 1)
        self.pointer("windowfocus", "--sync", window)
        waitUntil(lambda: self.run_("xdotool", "getwindowname", window).strip() == "pictures", "it")
        self.press("Escape")
        before = self.still()
        self.press("ctrl+a")
        waitUntil(lambda: self.still().tobytes() != before.tobytes(), "the selection")
        selected = ImageChops.difference(self.still(), before).convert("L")
        # Both items change their colour, and nothing between them: one of the pixels is inside.
        changed = [i for i, value in enumerate(selected.getdata()) if value]
        place = changed[len(changed) // 2]
        return place % SCREEN[0], place // SCREEN[0]

    def test_two_folders_are_dragged_onto_the_icon(self):
        icon = self.startWithIcon()
        idle = self.look(icon)
        x, y = self.selectAll(self.openFileManager())

        self.pointer("mousemove", x, y, "mousedown", 1)
        # Further than a click may move.
        for step in range(1, 8):
            self.pointer("mousemove", x + 5 * step, y + 3 * step)
        middle = icon.middle()

        def isHighlighted():
            for offset in (1, 0):
                self.pointer("mousemove", middle[0] + offset, middle[1])
            return self.look(icon) != idle

        waitUntil(isHighlighted, "a highlighted icon")
        self.assertEqual(self.watchedDirectories(), 0, "nothing was dropped yet")
        self.pointer("mouseup", 1)

        self.waitUntilWatching(2)
        waitUntil(lambda: self.look(icon) == idle, "the idle icon")
        self.assertIsNone(self.popover(), "the popover stays closed")
        # They are saved: after a restart both are watched again.
        self.application.terminate()
        self.waitForEnd()
        self.start()
        self.waitUntilWatching(2)
        listed = self.run_(self.program.with_name("kestrivane-watch"), "--list").split("\n")
        self.assertCountEqual(filter(None, listed), map(str, self.folders))

"""A desktop of the test's own (a display, a session bus, a tray, a notification service) and the
application on it, operated by a real pointer and keyboard.
"""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import harness
from PIL import Image
from session_bus import Service, SessionBus
from waiting import PATIENCE, waitUntil

HERE = pathlib.Path(__file__).resolve().parent

POPOVER = (360, 540)
SCREEN = (1024, 768)


class Window:
    """A window that the server shows, with its place on the screen in pixels."""

    def __init__(self, identifier, name, width, height, x, y):
        self.identifier, self.name = identifier, name
        self.width, self.height, self.x, self.y = width, height, x, y

    def middle(self):
        return self.x + self.width // 2, self.y + self.height // 2

    def box(self):
        return (self.x, self.y, self.x + self.width, self.y + self.height)


class DesktopTestCase(unittest.TestCase):
    """Starts an empty desktop; the test starts tray and application."""

    screen = SCREEN
    depth = 24
    # Pixels of the screen for each unit that the application counts in.
    scale = 1

    def setUp(self):
        self.base = pathlib.Path(tempfile.mkdtemp(prefix="kestrivane-desktop-")).resolve()
        self.addCleanup(shutil.rmtree, self.base, ignore_errors=True)
        runtime, temporary = self.base / "runtime", self.base / "temporary"
        for each in (runtime, temporary):
            each.mkdir(mode=0o700)
        self.bus = SessionBus(self.base)
        self.addCleanup(self.bus.kill)
        self.environment = {
            "PATH": os.environ["PATH"],
            "HOME": str(self.base),
            "LANG": "C.UTF-8",
            "TMPDIR": str(temporary),
            "XDG_RUNTIME_DIR": str(runtime),
            "DBUS_SESSION_BUS_ADDRESS": self.bus.address,
            "NO_AT_BRIDGE": "1",
        }
        self.configuration = self.base / ".config" / "kestrivane"
        self.startDisplay()
        self.startNotifications()
        self.program = harness.program.parent / "kestrivane"
        self.application = None

    def startDisplay(self):
        reading, writing = os.pipe()
        server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-noreset", "-nolisten", "tcp"]
            + ["-screen", "0", "x".join(map(str, [*(side * self.scale for side in self.screen), self.depth]))],
            pass_fds=[writing],
            stderr=subprocess.DEVNULL,
        )
        self.addCleanup(self.end, server)
        os.close(writing)
        with os.fdopen(reading) as numbers:
            self.environment["DISPLAY"] = ":" + numbers.readline().strip()

    def startNotifications(self):
        """Starts the notification service of the tests; `messages` says what it was told."""
        self.notifications = Service(self.environment, 0, ["body"])
        self.addCleanup(self.notifications.kill)

    def end(self, process):
        process.kill()
        process.wait(PATIENCE)

    def startProgram(self, *command, **options):
        process = subprocess.Popen(
            command, **{"env": self.environment, "stdin": subprocess.DEVNULL, **options}
        )
        self.addCleanup(self.end, process)
        return process

    def startService(self, *arguments):
        """Starts a service of bus_services.py."""
        service = self.startProgram(
            *["/usr/bin/python3", "-B", HERE / "bus_services.py", *arguments],
            stdout=subprocess.PIPE,
            text=True,
        )
        self.assertEqual(service.stdout.readline(), "ready\n")
        return service

    def startTray(self, edge="top"):
        return self.startProgram(
            *["trayer", "--edge", edge, "--align", "right", "--widthtype", "request"],
            *["--height", str(24 * self.scale), "--transparent", "false"],
            stderr=subprocess.DEVNULL,
        )

    def start(self, *folders):
        """Starts the application."""
        self.application = self.startProgram(self.program, *folders)
        return self.application

    def startWithIcon(self, *folders):
        self.startTray()
        self.start(*folders)
        return self.waitForIcon()

    def waitForEnd(self):
        self.assertEqual(self.application.wait(PATIENCE), 0, "exit status")

    # What is to be seen

    def windows(self, program="kestrivane"):
        """The windows of a program that are shown; its name is that of their class or instance."""
        found = []
        title = r'(?:"(.*)"|\(has no name\))'
        place = r"(\d+)x(\d+)\+-?\d+\+-?\d+\s+\+(-?\d+)\+(-?\d+)"
        pattern = rf'(0x\w+) {title}: \((?:"[^"]*" )?"{program}".*?\)\s+{place}'
        for identifier, name, *numbers in re.findall(pattern, self.windowTree_()):
            window = Window(identifier, name, *map(int, numbers))
            try:
                if "IsViewable" in self.run_("xwininfo", "-id", identifier):
                    found.append(window)
            except AssertionError:
                pass  # it has gone
        return found

    def windowTree_(self):
        trees = []

        def isComplete():
            try:
                trees.append(self.run_("xwininfo", "-root", "-tree"))
            except AssertionError:
                pass  # a window has gone meanwhile
            return trees

        waitUntil(isComplete, "a list of all windows")
        return trees[0]

    def popover(self):
        for window in self.windows():
            if (window.width, window.height) == tuple(side * self.scale for side in POPOVER):
                return window
        return None

    def icon(self):
        for window in self.windows():
            if window.height <= 48 * self.scale:
                return window
        return None

    def waitForIcon(self):
        """The icon, once two looks find it at one place: a tray moves what it has taken in."""
        looks = [None]

        def isAtRest():
            looks.append(self.icon())
            return None not in looks[-2:] and looks[-1].box() == looks[-2].box()

        waitUntil(isAtRest, "an icon in the tray")
        return looks[-1]

    def waitForPopover(self):
        return waitUntil(self.popover, "the popover")

    def waitUntilClosed(self):
        waitUntil(lambda: self.popover() is None, "the popover to close")

    def picture(self, box=None):
        """What the screen shows, or a part of it."""
        file = self.base / "screen.png"
        self.run_("import", "-silent", "-window", "root", str(file))
        with Image.open(file) as screen:
            return screen.convert("RGB").crop(box)

    def still(self, box=None):
        """As `picture`, once two looks at it are the same."""
        pictures = [self.picture(box)]

        def isStill():
            pictures.append(self.picture(box))
            return pictures[-1].tobytes() == pictures[-2].tobytes()

        waitUntil(isStill, "a screen that stands still")
        return pictures[-1]

    def look(self, icon):
        return self.picture(icon.box()).tobytes()

    # What the user does

    def run_(self, *command):
        done = subprocess.run(
            command, env=self.environment, capture_output=True, text=True, timeout=PATIENCE
        )
        if done.returncode != 0:
            raise AssertionError(f"{command}: {done.stderr}")
        return done.stdout

    def pointer(self, *arguments):
        self.run_("xdotool", *map(str, arguments))

    def click(self, x, y, button=1):
        self.pointer("mousemove", x, y, "click", button)

    def press(self, *keys):
        """Presses keys, which go to the window that has the keyboard."""
        self.pointer("key", *keys)

    def open(self):
        """Opens the popover with a click on the icon, and waits until it has the keyboard."""
        self.click(*self.waitForIcon().middle())
        popover = self.waitForPopover()
        waitUntil(lambda: self.focus() == int(popover.identifier, 16), "the keyboard in the popover")
        return popover

    def focus(self):
        return int(self.run_("xdotool", "getwindowfocus", "-f").strip() or 0)

    # What the application knows

    def watchedDirectories(self):
        """How many directories are watched, without the one that the saved list is in."""
        inodes = []
        for entry in pathlib.Path(f"/proc/{self.application.pid}/fdinfo").iterdir():
            try:
                inodes += re.findall(r"inotify wd:\S+ ino:(\S+)", entry.read_text())
            except FileNotFoundError:
                pass  # closed since the listing
        own = self.configuration.stat().st_ino if self.configuration.exists() else None
        return sum(int(inode, 16) != own for inode in inodes)

    def waitUntilWatching(self, count):
        waitUntil(lambda: self.watchedDirectories() == count, f"{count} watched directories")

    def messages(self):
        return [f"{each['title']}: {each['body']}" for each in self.notifications.notifications]

    def waitForMessages(self, *messages):
        waitUntil(lambda: len(self.messages()) >= len(messages), f"{len(messages)} notifications")
        self.assertEqual(self.messages(), list(messages))
        self.notifications.notifications.clear()

    def makeFolder(self, name):
        folder = self.base / name
        folder.mkdir()
        return folder


class DragSource:
    """A window of another program from whose middle files can be dragged."""

    def __init__(self, test, *files):
        self.test_ = test
        self.process = test.startProgram(
            *["/usr/bin/python3", "-B", HERE / "drag_source.py", *files],
            stdout=subprocess.PIPE,
            text=True,
        )
        self.expect("ready")

    def drag(self, x, y):
        """Presses in the source and moves to the place, without releasing."""
        test = self.test_
        test.pointer("mousemove", 100, 600, "mousedown", 1)
        # Enough to be taken for a drag; the source says when it has begun.
        test.pointer("mousemove", 120, 610)
        test.pointer("mousemove", 140, 590)
        self.expect("dragging")
        test.pointer("mousemove", x - 1, y)
        test.pointer("mousemove", x, y)

    def drop(self, outcome):
        """Releases, and expects this outcome."""
        self.test_.pointer("mouseup", 1)
        self.expect(outcome)

    def expect(self, word):
        """Waits until the source says the word; drag_source.py tells which there are."""
        self.test_.assertEqual(self.process.stdout.readline(), f"{word}\n")

"""The application on Wayland, without an X server that it could reach. The compositor, weston, is a
window on the test's display, so that it has a real pointer and a real keyboard.
"""

import subprocess

import dbus.bus
from desktop import HERE, POPOVER, SCREEN, DesktopTestCase
from PIL import ImageChops
from waiting import PATIENCE, waitUntil

DESKTOP = (0x33, 0x66, 0x99)
WHITE = (0xFF, 0xFF, 0xFF)

CONFIGURATION = (
    """
[core]
idle-time=0
[shell]
panel-position=none
background-color=0xff%02x%02x%02x
locking=false
animation=none
startup-animation=none
close-animation=none
"""
    % DESKTOP
)

NO_TRAY = "Kestrivane: There is no tray for the icon. Start Kestrivane again to open its window."


class Wayland(DesktopTestCase):
    # The compositor's window leaves some of the display free.
    screen = (SCREEN[0] + 64, SCREEN[1])

    def setUp(self):
        super().setUp()
        configuration = self.base / "weston.ini"
        configuration.write_text(CONFIGURATION)
        self.startProgram(
            *["weston", "--backend=x11-backend.so", "--use-pixman", "--socket=wayland"],
            *["--width=%d" % SCREEN[0], "--height=%d" % SCREEN[1], f"--config={configuration}"],
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        waitUntil(lambda: self.isAll(DESKTOP), "the compositor's desktop")
        window = self.run_("xdotool", "search", "--class", "Weston Compositor").split()[0]
        self.pointer("windowfocus", "--sync", window)
        self.desktop = self.picture()
        self.client = self.environment | {"WAYLAND_DISPLAY": "wayland"}
        del self.client["DISPLAY"]

    def start(self, *folders):
        self.application = self.startProgram(self.program, *folders, env=self.client)
        return self.application

    def startAgain(self):
        second = self.startProgram(self.program, env=self.client)
        self.assertEqual(second.wait(PATIENCE), 0)

    def picture(self, box=None):
        """As everywhere, but without the pointer, which the compositor draws into its window. It may have
        missed where the pointer is, unless that comes in from outside."""
        self.pointer("mousemove", SCREEN[0] + 32, SCREEN[1] - 1)
        self.pointer("mousemove", SCREEN[0] - 1, SCREEN[1] - 1)
        picture = super().picture((0, 0, *SCREEN))
        picture.paste(picture.getpixel((0, 0)), (SCREEN[0] - 8, SCREEN[1] - 8, *SCREEN))
        return picture.crop(box)

    def isAll(self, colour):
        colours = self.picture().getcolors(1)
        return colours is not None and colours[0][1] == colour

    def place(self, before):
        """Where the screen differs from what it was before."""
        return ImageChops.difference(self.picture(), before).getbbox()

    def waitForPopover(self, before=None):
        """Waits for the popover, which is all that differs, and returns where it is."""
        before = before or self.desktop

        def isShown():
            place = self.place(before)
            return place and (place[2] - place[0], place[3] - place[1]) == POPOVER

        waitUntil(isShown, "the popover, whole and alone")
        return self.place(before)

    def waitUntilGone(self, why):
        waitUntil(lambda: self.place(self.desktop) is None, f"an empty desktop: {why}")

    def openOther(self):
        """Opens the white window of another program, which gets the keyboard."""
        other = self.startProgram(
            *["/usr/bin/python3", "-B", HERE / "white_window.py"],
            env=self.client,
            stdout=subprocess.PIPE,
            text=True,
        )
        self.assertEqual(other.stdout.readline(), "ready\n")
        waitUntil(lambda: self.isAll(WHITE), "a white screen")
        return other

    def test_without_a_panel_the_popover_opens_and_is_operated_by_pointer_and_keyboard(self):
        folder = self.makeFolder("watched")
        self.start(folder)
        left, top, _, _ = self.waitForPopover()
        self.waitForMessages(NO_TRAY)
        self.waitUntilWatching(1)
        self.click(left + 317, top + 147)  # the card's button
        self.waitUntilWatching(0)
        self.press("Escape")
        self.waitUntilGone("Escape has closed the popover")
        self.assertIsNone(self.application.poll(), "it goes on")

        self.startAgain()
        self.waitForPopover()
        self.press("Tab", "space")  # the button that quits
        self.waitForEnd()

    def test_the_popover_closes_when_another_window_gets_the_keyboard(self):
        self.start()
        self.waitForPopover()
        self.waitForMessages(NO_TRAY)
        other = self.openOther()
        self.end(other)
        self.waitUntilGone("a new window has closed the popover")

        other = self.openOther()
        white = self.picture()
        self.startAgain()
        left, _, right, _ = self.waitForPopover(white)
        # Outside of the popover, wherever the compositor has placed it.
        self.click(left - 5 if left > SCREEN[0] - right else right + 5, SCREEN[1] // 2)
        waitUntil(lambda: self.place(white) is None, "the popover to close")
        self.end(other)
        self.waitUntilGone("a click outside has closed it, and it was not covered alone")
        self.assertIsNone(self.application.poll(), "it goes on")

    def test_a_panel_opens_and_closes_the_popover(self):
        panel = self.startService("watcher")
        self.start()
        name = panel.stdout.readline().strip()
        bus = dbus.bus.BusConnection(self.bus.address)
        self.addCleanup(bus.close)
        item = bus.get_object(name, "/StatusNotifierItem")
        self.assertIsNone(self.place(self.desktop), "no window")
        item.Activate(0, 0, dbus_interface="org.kde.StatusNotifierItem")
        self.waitForPopover()
        item.Activate(0, 0, dbus_interface="org.kde.StatusNotifierItem")
        self.waitUntilGone("the second click has closed the popover")
        self.assertEqual(self.messages(), [])

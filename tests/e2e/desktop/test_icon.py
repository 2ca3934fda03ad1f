"""The icon and its popover, operated by pointer and keyboard."""

import os
import signal

from desktop import SCREEN, DesktopTestCase
from waiting import PATIENCE, waitUntil


class Icon(DesktopTestCase):
    def test_starts_with_one_icon_and_no_window_and_opens_and_closes_its_popover(self):
        icon = self.startWithIcon()
        self.assertEqual(len(self.windows()), 1)
        self.assertGreater(len(set(self.picture(icon.box()).getdata())), 2, "something is drawn")
        middle = icon.middle()

        popover = self.open()
        self.assertGreaterEqual(popover.y, icon.y + icon.height, "below the icon")
        self.assertLessEqual(popover.x + popover.width, SCREEN[0], "on the screen")
        self.assertGreater(len(set(self.picture(popover.box()).getdata())), 20, "something is drawn")

        # A second click closes it, and does not open it again when the button is released.
        self.click(*middle)
        self.waitUntilClosed()
        self.open()
        self.pointer("mousemove", *middle, "mousedown", 1)
        self.pointer("sleep", 0.5, "mouseup", 1)  # a long press
        self.waitUntilClosed()

        self.open()
        self.click(200, 700)
        self.waitUntilClosed()

        popover = self.open()
        self.click(popover.x + 180, popover.y + 15)  # on nothing in particular inside of it
        self.press("Escape")
        self.waitUntilClosed()

        self.click(*middle, 3)  # the other button does the same
        self.waitForPopover()

    def test_follows_the_tray_when_it_dies_and_comes_back_at_another_edge(self):
        tray = self.startTray()
        self.start()
        icon = self.waitForIcon()
        self.end(tray)
        waitUntil(lambda: self.windows() == [], "the icon to go")
        self.startTray(edge="bottom")
        waitUntil(lambda: self.icon() and self.icon().y > SCREEN[1] // 2, "an icon at the bottom")
        icon = self.icon()
        popover = self.open()
        self.assertLessEqual(popover.y + popover.height, icon.y, "above the icon")

    def test_without_a_tray_the_popover_opens_and_a_notification_says_why(self):
        self.start()
        self.waitForPopover()
        self.waitForMessages(
            "Kestrivane: There is no tray for the icon. Start Kestrivane again to open its window."
        )
        self.press("Escape")
        self.waitUntilClosed()
        self.assertEqual(self.startProgram(self.program).wait(PATIENCE), 0, "a second start")
        self.waitForPopover()

    def test_a_second_start_opens_the_popover_of_the_first_and_adds_folders(self):
        self.startWithIcon()
        strange = os.fsdecode(b"caf\xe9 %41 \xd0\xb0")  # one byte of it is no UTF-8
        folder = self.makeFolder(strange)
        second = self.startProgram(self.program, strange, cwd=self.base)
        self.assertEqual(second.wait(PATIENCE), 0)
        self.waitForPopover()
        self.waitUntilWatching(1)
        self.assertIsNone(self.application.poll(), "the first one goes on")
        self.assertEqual(self.notifications.notifications, [])
        self.assertTrue(folder.is_dir())

    def test_a_signal_ends_it(self):
        self.startWithIcon()
        self.application.send_signal(signal.SIGTERM)
        self.waitForEnd()

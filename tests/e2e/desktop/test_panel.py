"""The icon in a real panel, which is an X11 tray and shows items from the session bus."""

from desktop import SCREEN, DesktopTestCase, DragSource
from PIL import ImageChops
from waiting import waitUntil
from xfce_panel import XfcePanel

STRIP = (0, 0, SCREEN[0], XfcePanel.HEIGHT)


class Panel(DesktopTestCase):
    def waitForItem(self, empty):
        """Waits until the panel shows something that it did not show, and returns its middle."""
        waitUntil(self.panel.items, "an item on the bus")

        def isShown():
            return self.picture(STRIP).tobytes() != empty.tobytes()

        waitUntil(isShown, "the icon in the panel")
        left, top, right, bottom = ImageChops.difference(self.still(STRIP), empty).getbbox()
        self.assertLessEqual(right - left, 48, "one icon and no more")
        return (left + right) // 2, (top + bottom) // 2

    def test_clicks_on_its_icon_open_and_close_the_popover_and_it_follows_the_panel(self):
        self.panel = XfcePanel(self, isTray=False)
        empty = self.still(STRIP)
        self.start()
        x, y = self.waitForItem(empty)
        self.assertIsNone(self.popover())

        self.panel.click(x, y)
        popover = self.waitForPopover()
        self.assertGreaterEqual(popover.y, y, "below the pointer")
        self.assertLess(popover.y - y, 2 * XfcePanel.HEIGHT, "near to it")
        self.assertTrue(
            popover.x <= x < popover.x + popover.width, "the pointer is above its width"
        )
        self.panel.click(x, y)
        self.waitUntilClosed()
        self.panel.click(x, y)
        self.waitForPopover()
        self.click(SCREEN[0] // 2 + 300, SCREEN[1] - 50)
        self.waitUntilClosed()

        self.panel.die()
        waitUntil(lambda: not self.panel.items(), "the item to go with the panel")
        self.panel.start()
        x, y = self.waitForItem(empty)
        self.panel.click(x, y)
        self.waitForPopover()

    def test_where_it_is_a_tray_the_icon_takes_drops(self):
        self.panel = XfcePanel(self, isTray=True)
        self.start()
        icon = self.waitForIcon()
        self.assertLess(icon.y, XfcePanel.HEIGHT, "in the panel")
        idle = self.still(icon.box()).tobytes()
        source = DragSource(self, self.makeFolder("one"), self.makeFolder("two"))
        source.drag(*icon.middle())
        source.expect("welcome")
        waitUntil(lambda: self.look(icon) != idle, "a highlighted icon")
        source.drop("dropped")
        self.waitUntilWatching(2)
        popover = self.open()
        self.assertGreaterEqual(popover.y, icon.y + icon.height, "below the icon")
        self.assertEqual(self.panel.items(), [], "one icon and no more")

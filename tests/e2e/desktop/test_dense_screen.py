"""The application on a screen with two pixels, in each direction, for each of its units."""

from desktop import POPOVER, SCREEN, DesktopTestCase, DragSource
from waiting import waitUntil


class DenseScreen(DesktopTestCase):
    scale = 2

    def operate(self):
        icon = self.startWithIcon()
        self.assertGreaterEqual(icon.height, 2 * 22, "as large as others on this screen")
        waitUntil(lambda: len(set(self.picture(icon.box()).getdata())) > 2, "the icon to be drawn")

        popover = self.open()
        self.assertEqual((popover.width, popover.height), (2 * POPOVER[0], 2 * POPOVER[1]))
        below = popover.y - (icon.y + icon.height)
        self.assertTrue(0 <= below <= 2 * 8, f"{below} pixels below the icon")
        self.assertTrue(popover.x <= icon.middle()[0] <= popover.x + popover.width)
        self.assertLessEqual(popover.x + popover.width, 2 * SCREEN[0], "on the screen")

        # Just inside of its edges nothing closes it, just outside a click does.
        right, bottom = popover.x + popover.width, popover.y + popover.height
        self.click(popover.x + 8, bottom - 100)
        self.click(right - 8, bottom - 100)
        self.press("Tab")
        self.assertIsNotNone(self.popover())
        self.click(popover.x - 8, bottom - 100)
        self.waitUntilClosed()

        popover = self.open()
        self.press("Escape")
        self.waitUntilClosed()

        idle = self.look(icon)
        source = DragSource(self, self.makeFolder("one"), self.makeFolder("two"))
        source.drag(*icon.middle())
        source.expect("welcome")
        waitUntil(lambda: self.look(icon) != idle, "a highlighted icon")
        source.drop("dropped")
        self.waitUntilWatching(2)

        # The first card's button is where it is drawn, twice as far from the corner.
        popover = self.open()
        self.click(popover.x + 2 * 317, popover.y + 2 * 147)
        self.waitUntilWatching(1)

    def test_everything_is_twice_as_large_where_the_user_says_so(self):
        self.environment["QT_SCALE_FACTOR"] = "2"
        self.operate()

    def test_everything_is_twice_as_large_on_a_dense_screen(self):
        # Desktops tell the density so, in dots per inch; 96 are usual.
        self.run_(
            *["xprop", "-root", "-f", "RESOURCE_MANAGER", "8s"],
            *["-set", "RESOURCE_MANAGER", "Xft.dpi:\t192\n"],
        )
        self.operate()

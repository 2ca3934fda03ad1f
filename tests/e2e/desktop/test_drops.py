"""Folders dragged from another program onto the icon and onto the popover."""

from desktop import DesktopTestCase, DragSource
from waiting import waitUntil


# The accent colour of a desktop that has chosen none.
ACCENT = (48, 140, 198)


class Drops(DesktopTestCase):
    def assertHighlighted(self, icon, panel):
        """The accent colour covers 30 % of the panel in a rectangle two points inside of the icon, with
        corners of four points. Looks only where the symbol in the middle does not reach."""
        shown = self.still(icon.box())
        right, bottom = icon.width - 1, icon.height - 1

        def shareOfAccent(x, y):
            """For each channel in which the two colours differ enough to tell."""
            pairs = zip(shown.getpixel((x, y)), panel.getpixel((x, y)), ACCENT)
            return [(now - before) / (accent - before) for now, before, accent in pairs
                    if abs(accent - before) > 50]

        for x, y in ((2, 8), (8, 2), (right - 2, 8), (8, bottom - 2)):
            for share in shareOfAccent(x, y):
                self.assertAlmostEqual(share, 0.3, delta=0.03, msg=f"at {x}, {y}")
        for x, y in ((1, 8), (8, 1), (right - 1, 8), (8, bottom - 1), (2, 2), (right - 2, 2)):
            self.assertEqual(shown.getpixel((x, y)), panel.getpixel((x, y)), f"at {x}, {y}")
        for x, y in ((3, 3), (right - 3, 3), (3, bottom - 3)):
            self.assertGreater(min(shareOfAccent(x, y)), 0.2, f"at {x}, {y}")

    def test_folders_dropped_on_the_icon_are_watched_and_highlighted_meanwhile(self):
        icon = self.startWithIcon()
        idle = self.look(icon)
        panel = self.picture(icon.box())
        first, second = self.makeFolder("first"), self.makeFolder("второй")
        source = DragSource(self, first, second, __file__)

        source.drag(*icon.middle())
        source.expect("welcome")
        waitUntil(lambda: self.look(icon) != idle, "a highlighted icon")
        self.assertHighlighted(icon, panel)
        self.pointer("mousemove", 500, 300)
        source.expect("unwelcome")
        waitUntil(lambda: self.look(icon) == idle, "the idle icon")
        self.assertEqual(self.watchedDirectories(), 0, "nothing was dropped")
        self.pointer("mousemove", *icon.middle())
        source.expect("welcome")
        source.drop("dropped")

        self.waitUntilWatching(2)
        waitUntil(lambda: self.look(icon) == idle, "the idle icon")
        self.assertIsNone(self.popover(), "the popover stays closed")

    def test_addresses_that_are_not_of_files_are_not_taken(self):
        icon = self.startWithIcon()
        idle = self.look(icon)
        source = DragSource(self, "https://example.org/folder")
        source.drag(*icon.middle())
        self.still()
        self.assertEqual(self.look(icon), idle, "nothing is highlighted")
        source.drop("refused")
        popover = self.open()
        source.drag(*popover.middle())
        source.drop("refused")

    def test_the_popover_stays_open_for_a_drag_and_takes_folders(self):
        self.startWithIcon()
        popover = self.open()
        source = DragSource(self, self.makeFolder("one"), __file__, self.makeFolder("two"))
        source.drag(*popover.middle())
        source.expect("welcome")
        source.drop("dropped")
        self.waitUntilWatching(2)
        self.assertIsNotNone(self.popover(), "it is open still")

    def test_a_drag_that_ends_elsewhere_closes_the_popover(self):
        self.startWithIcon()
        self.open()
        source = DragSource(self, self.makeFolder("one"))
        source.drag(400, 500)
        self.assertIsNotNone(self.popover(), "it waits for the drag")
        source.drop("refused")
        self.waitUntilClosed()
        self.assertEqual(self.watchedDirectories(), 0)

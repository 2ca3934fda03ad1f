"""Folders dragged from another program onto the icon and onto the popover."""

from desktop import DesktopTestCase, DragSource
from waiting import waitUntil


class Drops(DesktopTestCase):
    def test_folders_dropped_on_the_icon_are_watched_and_highlighted_meanwhile(self):
        icon = self.startWithIcon()
        idle = self.look(icon)
        first, second = self.makeFolder("first"), self.makeFolder("второй")
        source = DragSource(self, first, second, __file__)

        source.drag(*icon.middle())
        source.expect("welcome")
        waitUntil(lambda: self.look(icon) != idle, "a highlighted icon")
        # Inside the rounded rectangle the accent colour tints the panel; outside of it nothing does.
        highlighted = self.picture(icon.box())
        corner, edge = highlighted.getpixel((0, 0)), highlighted.getpixel((icon.width // 2, 3))
        self.assertNotEqual(edge, corner)
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

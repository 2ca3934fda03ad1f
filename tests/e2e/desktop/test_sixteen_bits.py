"""A screen with sixteen bits for each pixel, as over remote connections and on small computers."""

from desktop import DesktopTestCase, DragSource
from waiting import waitUntil


class SixteenBits(DesktopTestCase):
    depth = 16

    def test_the_icon_is_drawn_anew_when_it_changes(self):
        icon = self.startWithIcon()
        idle = self.still(icon.box()).tobytes()
        source = DragSource(self, self.makeFolder("folder"))
        source.drag(*icon.middle())
        source.expect("welcome")
        waitUntil(lambda: self.look(icon) != idle, "another icon")
        self.pointer("mousemove", 500, 300)
        source.expect("unwelcome")
        waitUntil(lambda: self.look(icon) == idle, "the idle icon")

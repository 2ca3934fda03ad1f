"""The icon in the tray of a real panel, which shows items from the session bus too."""

from desktop import DesktopTestCase, DragSource
from waiting import waitUntil
from xfce_panel import XfcePanel


class Panel(DesktopTestCase):
    def test_the_icon_takes_drops(self):
        self.panel = XfcePanel(self)
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

"""A real panel that shows status items from the session bus: xfce4-panel."""

import os
import signal
import subprocess

import dbus
import dbus.bus
import trays
from waiting import PATIENCE, waitUntil

XFCONFD = "/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd"
WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"

# One row at the upper edge, with nothing in it but the status items.
CONFIGURATION = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="28"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
"""


class XfcePanel:
    """A running panel; ends with the test. `HEIGHT` pixels at the top of the screen are its own. The
    panel is an X11 tray too, which the application prefers, unless that is taken away."""

    HEIGHT = 28

    def __init__(self, test, isTray):
        self.test_ = test
        self.isTray_ = isTray
        self.bus_ = dbus.bus.BusConnection(test.bus.address)
        test.addCleanup(self.bus_.close)
        folder = test.base / ".config" / "xfce4" / "xfconf" / "xfce-perchannel-xml"
        folder.mkdir(parents=True)
        (folder / "xfce4-panel.xml").write_text(CONFIGURATION)
        test.startProgram(XFCONFD)
        waitUntil(lambda: self.bus_.name_has_owner("org.xfce.Xfconf"), "the panel's settings")
        self.start()

    def start(self):
        # A group of its own: what it shows, it shows by processes of its own.
        self.process_ = self.test_.startProgram(
            *["xfce4-panel", "--disable-wm-check"],
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            start_new_session=True,
        )
        self.test_.addCleanup(self.die)
        waitUntil(self.isHost_, "a panel for status items")
        if not self.isTray_:
            display = self.test_.environment["DISPLAY"]
            waitUntil(lambda: trays.isThere(display), "the panel's tray")
            trays.replace(display)
            self.closeComplaint_()

    def closeComplaint_(self):
        """Closes the window that says that the tray is lost; before, the panel heeds no click."""
        waitUntil(self.complaint_, "the panel to miss its tray")

        def isClosed():
            window = self.complaint_()
            if window:
                # Its only button is as wide as the window.
                self.test_.click(window.middle()[0], window.y + window.height - 10)
            return window is None

        waitUntil(isClosed, "the panel's complaint to close")

    def complaint_(self):
        for window in self.test_.windows("wrapper-2.0"):
            if window.height > self.HEIGHT:
                return window
        return None

    def die(self):
        """Ends it without a warning."""
        if self.process_.poll() is None:
            os.killpg(self.process_.pid, signal.SIGKILL)
            self.process_.wait(PATIENCE)

    def isHost_(self):
        if not self.bus_.name_has_owner(WATCHER):
            return False
        watcher = self.bus_.get_object(WATCHER, "/StatusNotifierWatcher", introspect=False)
        return bool(
            watcher.Get(
                WATCHER, "IsStatusNotifierHostRegistered", dbus_interface=dbus.PROPERTIES_IFACE
            )
        )

    def items(self):
        """The bus names of the status items."""
        return [str(name) for name in self.bus_.list_names() if name.startswith(f"{ITEM}-")]

    def click(self, x, y):
        """Clicks on the only item. When this returns, the application has heard of it."""
        rule = f"interface='{ITEM}',member='Activate'"
        monitor = self.test_.startProgram(
            *["dbus-monitor", "--address", self.test_.bus.address, "--profile", rule],
            stdout=subprocess.PIPE,
            text=True,
        )

        def waitFor(word):
            while word not in monitor.stdout.readline():
                self.test_.assertIsNone(monitor.poll(), "dbus-monitor runs")

        waitFor("NameLost")  # now it listens
        self.test_.click(x, y)
        waitFor("Activate")
        # Answered after what came before.
        item = self.bus_.get_object(self.items()[0], "/StatusNotifierItem", introspect=False)
        item.Get(ITEM, "Status", dbus_interface=dbus.PROPERTIES_IFACE)
        monitor.kill()

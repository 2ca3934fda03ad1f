"""A real panel that shows status items from the session bus: xfce4-panel."""

import os
import signal
import subprocess

import dbus
import dbus.bus
from waiting import PATIENCE, waitUntil

XFCONFD = "/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd"
WATCHER = "org.kde.StatusNotifierWatcher"

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
    panel is a tray for windows too, which the application prefers."""

    HEIGHT = 28

    def __init__(self, test):
        self.test_ = test
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
        names = self.bus_.list_names()
        return [str(name) for name in names if name.startswith("org.kde.StatusNotifierItem-")]

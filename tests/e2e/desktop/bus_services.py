"""Services of a desktop on the session bus, for tests.

    bus_services.py watcher            a panel that shows status items: org.kde.StatusNotifierWatcher
    bus_services.py portal FOLDER...   a portal whose user chooses the folders: its file chooser
    bus_services.py portal             one whose user cancels
    bus_services.py settings SCHEME    a portal whose user has chosen this color-scheme; another one
                                       is chosen with its method Choose

Prints "ready", then what it is told: the names of items that register, the options of dialogues.
"""

import pathlib
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

WATCHER = "org.kde.StatusNotifierWatcher"
PORTAL = "org.freedesktop.portal"


class Watcher(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(dbus.service.BusName(WATCHER, bus), "/StatusNotifierWatcher")

    @dbus.service.method(WATCHER, in_signature="s")
    def RegisterStatusNotifierItem(self, service):
        print(service, flush=True)

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return (interface, name) == (WATCHER, "IsStatusNotifierHostRegistered")


class Portal(dbus.service.Object):
    def __init__(self, bus, *folders):
        super().__init__(dbus.service.BusName(f"{PORTAL}.Desktop", bus), "/org/freedesktop/portal/desktop")
        self.folders_ = folders

    @dbus.service.method(
        f"{PORTAL}.FileChooser", in_signature="ssa{sv}", out_signature="o", sender_keyword="sender"
    )
    def OpenFile(self, parent, title, options, sender):
        print(options["accept_label"], options["directory"], options["multiple"], flush=True)
        caller = sender[1:].replace(".", "_")
        path = f"/org/freedesktop/portal/desktop/request/{caller}/{options['handle_token']}"
        GLib.idle_add(self.answer_, Request(self.connection, path))
        return dbus.ObjectPath(path)

    def answer_(self, request):
        addresses = [pathlib.Path(folder).as_uri() for folder in self.folders_]
        request.Response(0 if addresses else 1, {"uris": dbus.Array(addresses, signature="s")})
        return False


class Settings(dbus.service.Object):
    GROUP, KEY = "org.freedesktop.appearance", "color-scheme"

    def __init__(self, bus, scheme):
        super().__init__(dbus.service.BusName(f"{PORTAL}.Desktop", bus), "/org/freedesktop/portal/desktop")
        self.scheme_ = dbus.UInt32(int(scheme), variant_level=2)

    @dbus.service.method(f"{PORTAL}.Settings", in_signature="ss", out_signature="v")
    def Read(self, group, key):
        if (group, key) != (self.GROUP, self.KEY):
            raise dbus.DBusException("There is no such setting.")
        return self.scheme_

    @dbus.service.method("test.Settings", in_signature="u")
    def Choose(self, scheme):
        self.scheme_ = dbus.UInt32(scheme, variant_level=2)
        self.SettingChanged("org.example", self.KEY, dbus.UInt32(1))
        self.SettingChanged(self.GROUP, self.KEY, dbus.UInt32(scheme))

    @dbus.service.signal(f"{PORTAL}.Settings", signature="ssv")
    def SettingChanged(self, group, key, value):
        pass


class Request(dbus.service.Object):
    @dbus.service.signal(f"{PORTAL}.Request", signature="ua{sv}")
    def Response(self, response, results):
        pass


def main(kind, *arguments):
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    service = {"watcher": Watcher, "portal": Portal, "settings": Settings}[kind](bus, *arguments)
    print("ready", flush=True)
    GLib.MainLoop().run()
    del service


if __name__ == "__main__":
    main(*sys.argv[1:])

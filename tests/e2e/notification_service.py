"""A desktop notification service for tests.

    notification_service.py SECONDS [CAPABILITY...]

Owns org.freedesktop.Notifications on the session bus, prints "ready", then each notification as one
line of JSON when it arrives. Answers `Notify` only SECONDS later.
"""

import json
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

INTERFACE = "org.freedesktop.Notifications"


class Service(dbus.service.Object):
    def __init__(self, bus, seconds, capabilities):
        super().__init__(dbus.service.BusName(INTERFACE, bus), "/org/freedesktop/Notifications")
        self.seconds_ = seconds
        self.capabilities_ = capabilities
        self.count_ = 0

    @dbus.service.method(INTERFACE, in_signature="", out_signature="as")
    def GetCapabilities(self):
        return dbus.Array(self.capabilities_, signature="s")

    @dbus.service.method(INTERFACE, in_signature="", out_signature="ssss")
    def GetServerInformation(self):
        return ("test", "test", "1", "1.2")

    @dbus.service.method(
        INTERFACE,
        in_signature="susssasa{sv}i",
        out_signature="u",
        async_callbacks=("reply", "fail"),
    )
    def Notify(self, application, replaces, icon, title, body, actions, hints, expiry, reply, fail):
        self.count_ += 1
        print(json.dumps({"application": application, "title": title, "body": body}), flush=True)
        GLib.timeout_add(int(self.seconds_ * 1000), self.answer_, reply, self.count_)

    def answer_(self, reply, identifier):
        reply(dbus.UInt32(identifier))
        return False


def main(seconds, *capabilities):
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    service = Service(dbus.SessionBus(), float(seconds), capabilities)
    print("ready", flush=True)
    GLib.MainLoop().run()
    del service


if __name__ == "__main__":
    main(*sys.argv[1:])

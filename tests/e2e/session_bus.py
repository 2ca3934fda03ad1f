"""A session bus of the test's own, and the notification service of notification_service.py on it."""

import json
import pathlib
import subprocess
import threading

from waiting import PATIENCE

HERE = pathlib.Path(__file__).resolve().parent

BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir={folder}</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


class Service:
    """A running notification_service.py and what it has been told."""

    def __init__(self, environment, seconds, capabilities):
        self.notifications = []
        self.process = subprocess.Popen(
            [
                "/usr/bin/python3",
                "-B",
                HERE / "notification_service.py",
                str(seconds),
                *capabilities,
            ],
            env=environment,
            stdout=subprocess.PIPE,
            text=True,
        )
        if self.process.stdout.readline() != "ready\n":
            raise AssertionError("the notification service does not start")
        threading.Thread(target=self.read_, daemon=True).start()

    def kill(self):
        self.process.kill()
        self.process.wait(PATIENCE)

    def read_(self):
        for line in self.process.stdout:
            self.notifications.append(json.loads(line))


class SessionBus:
    """A running bus; `address` goes into DBUS_SESSION_BUS_ADDRESS. It starts no services itself."""

    def __init__(self, folder):
        configuration = folder / "bus.conf"
        configuration.write_text(BUS.format(folder=folder))
        self.process = subprocess.Popen(
            ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--print-address"],
            stdout=subprocess.PIPE,
            text=True,
        )
        self.address = self.process.stdout.readline().strip()

    def kill(self):
        self.process.kill()
        self.process.wait(PATIENCE)

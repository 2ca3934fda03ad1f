"""Watched folders on a disk that comes and goes. The application gets mounts of its own."""

import subprocess
import unittest

from desktop import DesktopTestCase
from pictures import smallPicture
from waiting import PATIENCE, output, waitUntil

OWN_MOUNTS = ("unshare", "--mount")


class Disks(DesktopTestCase):
    def setUp(self):
        if subprocess.run([*OWN_MOUNTS, "true"], stderr=subprocess.DEVNULL).returncode != 0:
            raise unittest.SkipTest("mounts of one's own are not permitted")
        super().setUp()
        self.place = self.makeFolder("place")
        self.photos = str(self.place / "photos")

    def inMounts(self, *command):
        """Runs a command that sees and changes the mounts of the application."""
        output("nsenter", f"--target={self.application.pid}", "--mount", *command)

    def insert(self):
        # A new disk each time, with the folder on it before it comes to its place.
        new = self.base / "new"
        new.mkdir(exist_ok=True)
        self.inMounts("mount", "-t", "tmpfs", "disk", new)
        self.inMounts("mkdir", new / "photos")
        self.inMounts("mount", "--move", new, self.place)

    def takeOut(self):
        self.inMounts("umount", self.place)

    def startWithIcon(self):
        self.startTray()
        self.application = self.startProgram(*OWN_MOUNTS, self.program)
        self.waitForIcon()

    def add(self, folder):
        # A second start hands the folder to the application; it sees the same disks.
        enter = ["nsenter", f"--target={self.application.pid}", "--mount"]
        self.assertEqual(self.startProgram(*enter, self.program, folder).wait(PATIENCE), 0)

    def saved(self):
        companion = self.program.with_name("kestrivane-watch")
        return self.run_(companion, "--list").splitlines()

    def convertOnDisk(self, name):
        self.inMounts("cp", smallPicture(self.base), f"{self.photos}/{name}.png")
        self.inMounts("mv", f"{self.photos}/{name}.png", f"{self.photos}/{name}.jpg")
        self.waitForMessages(f"File converted: Success: {name}.png -> {name}.jpg")

    def test_a_folder_stays_while_its_disk_is_away_until_it_is_removed(self):
        other, another = str(self.makeFolder("other")), str(self.makeFolder("another"))
        self.startWithIcon()
        self.insert()
        self.add(self.photos)
        self.waitUntilWatching(1)
        self.convertOnDisk("before")
        self.takeOut()
        self.waitUntilWatching(0)
        self.add(other)
        self.waitUntilWatching(1)
        self.add(another)
        self.waitUntilWatching(2)
        self.assertEqual(self.saved(), [self.photos, other, another])
        self.insert()
        self.waitUntilWatching(3)
        self.convertOnDisk("after")

        self.takeOut()
        self.waitUntilWatching(2)
        self.run_(self.program.with_name("kestrivane-watch"), "--remove", self.photos)
        self.assertEqual(self.saved(), [other, another])
        self.insert()
        self.add(other)  # is done once the application has looked at its list again
        self.assertEqual(self.saved(), [other, another])
        self.assertEqual(self.watchedDirectories(), 2)

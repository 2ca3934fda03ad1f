"""The parts of the application that are loaded when they are first needed."""

import os
import pathlib
import shutil

from desktop import DesktopTestCase

POPOVER = "kestrivane-popover.so"


class Modules(DesktopTestCase):
    def moveAlone(self):
        """Puts the program where no module is; returns where modules would be."""
        modules = self.program.parent.parent / "libexec" / "kestrivane"
        moved = self.base / "moved"
        (moved / "bin").mkdir(parents=True)
        (moved / "libexec" / "kestrivane").mkdir(parents=True)
        self.program = pathlib.Path(shutil.copy(self.program, moved / "bin"))
        return modules, moved / "libexec" / "kestrivane"

    def maps(self):
        return pathlib.Path(f"/proc/{self.application.pid}/maps").read_text()

    def waitForRefusal(self, reason):
        self.waitForMessages(
            "Kestrivane: The window cannot be opened: A part of Kestrivane cannot be loaded: " + reason
        )

    def test_the_views_are_loaded_with_the_first_opening(self):
        self.startWithIcon()
        for library in ("libQt6Quick", "libQt6Qml", "libcurl", "libavcodec"):
            self.assertNotIn(library, self.maps())
        self.open()
        self.assertIn("libQt6Quick", self.maps())

    def test_without_its_module_there_is_a_notification_in_the_popovers_place(self):
        modules, own = self.moveAlone()
        # Only the program's own bundle counts.
        os.symlink(modules / POPOVER, self.base / POPOVER)
        self.environment["LD_LIBRARY_PATH"] = str(modules)
        self.startTray()
        self.application = self.startProgram(self.program, cwd=self.base)
        icon = self.waitForIcon()
        self.click(*icon.middle())
        self.waitForRefusal(POPOVER)

        (own / POPOVER).write_text("no module")
        self.click(*icon.middle())
        self.waitForRefusal(f"{own / POPOVER}: file too short")

        (own / POPOVER).unlink()
        os.symlink(modules / POPOVER, own / POPOVER)
        self.open()
        self.assertEqual(self.messages(), [])

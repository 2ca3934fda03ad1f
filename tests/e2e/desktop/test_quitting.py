"""Leaving the application while it converts."""

import contextlib
import os
import pathlib

import dbus.bus
from desktop import DesktopTestCase
from pictures import SAMPLES
from waiting import PATIENCE, output, waitUntil

NAME, OBJECT = "com.kestrivane.Kestrivane", "/com/kestrivane/Kestrivane"


class Quitting(DesktopTestCase):
    def setUp(self):
        super().setUp()
        self.bus_ = dbus.bus.BusConnection(self.bus.address)
        self.addCleanup(self.bus_.close)

    def quit(self, **options):
        """Returns once the application has been told, unless the reply is ignored."""
        program = self.bus_.get_object(NAME, OBJECT, introspect=False)
        program.ActivateAction(
            "quit",
            dbus.Array(signature="v"),
            dbus.Dictionary(signature="sv"),
            dbus_interface="org.freedesktop.Application",
            **options,
        )

    def startLongConversion(self):
        """Returns the film, under its new name, its content, and the number of the tool's process."""
        folder = self.makeFolder("watched")
        film = folder / "film.mp4"
        # Some hours of film, which are encoded for far longer than a test waits.
        copies = ["-stream_loop", "5000", "-i", SAMPLES / "media/mpeg4.mp4", "-c", "copy"]
        output("ffmpeg", "-v", "error", *copies, film)
        content = film.read_bytes()
        self.startWithIcon(folder)
        self.waitUntilWatching(1)
        os.rename(film, folder / "film.webm")
        waitUntil(self.tools, "the tool")
        return folder / "film.webm", content, self.tools()[0]

    def tools(self):
        """The processes of the tool that the application has started."""
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(FileNotFoundError, ProcessLookupError):
                name, _, state = (process / "stat").read_text().rpartition(")")
                if name.endswith("(ffmpeg") and int(state.split()[1]) == self.application.pid:
                    found.append(int(process.name))
        return found

    def test_quitting_again_ends_everything_at_once(self):
        film, content, tool = self.startLongConversion()
        self.quit()
        self.assertEqual(self.watchedDirectories(), 0)
        self.assertIsNone(self.application.poll(), "it waits for the conversion")
        self.assertTrue(self.bus_.name_has_owner(NAME))

        self.quit(ignore_reply=True)
        self.assertEqual(self.application.wait(PATIENCE), 0, "exit status")
        waitUntil(lambda: not pathlib.Path(f"/proc/{tool}").exists(), "the end of the tool")
        waitUntil(lambda: not self.bus_.name_has_owner(NAME), "the name to be free")
        self.assertEqual(film.read_bytes(), content)
        self.assertEqual(os.listdir(film.parent), ["film.webm"])

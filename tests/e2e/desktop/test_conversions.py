"""Conversions as the application shows them, and what of it survives a restart."""

import os
import subprocess

from desktop import DesktopTestCase
from pictures import smallPicture
from waiting import PATIENCE, output, waitUntil


class Conversions(DesktopTestCase):
    def setUp(self):
        super().setUp()
        self.folder = self.makeFolder("watched")
        self.sample = smallPicture(self.base).read_bytes()

    def put(self, name, content=None):
        (self.folder / name).write_bytes(self.sample if content is None else content)

    def rename(self, old, new):
        os.rename(self.folder / old, self.folder / new)

    def greys(self, icon):
        return self.picture(icon.box()).convert("L").getdata()

    def kindOf(self, name):
        return output("file", "--brief", "--mime-type", self.folder / name)

    def test_the_icon_is_busy_and_notifications_tell_the_outcome(self):
        icon = self.startWithIcon(self.folder)
        self.waitUntilWatching(1)
        idle = self.look(icon)
        panel, drawn = max(self.greys(icon)), min(self.greys(icon))
        # Several, two at a time, so that it is busy for as long as it takes to look.
        names = [str(number) for number in range(10)]
        for name in names:
            self.put(f"{name}.png")
        for name in names:
            self.rename(f"{name}.png", f"{name}.jpg")
        # Drawn at half its opacity, the darkest place is half as dark.
        half = (panel + drawn) / 2
        waitUntil(lambda: abs(min(self.greys(icon)) - half) <= 8, "the busy icon, dimmed")
        waitUntil(lambda: len(self.messages()) == len(names), "all notifications")
        waitUntil(lambda: self.look(icon) == idle, "the idle icon")
        self.assertCountEqual(
            self.messages(),
            [f"File converted: Success: {name}.png -> {name}.jpg" for name in names],
        )
        for name in names:
            self.assertEqual(self.kindOf(f"{name}.jpg"), "image/jpeg")

        self.notifications.notifications.clear()
        self.put("text.png", b"no picture")
        self.rename("text.png", "text.jpg")
        self.waitForMessages(
            "Conversion error: Conversion error: Failed to read source image.",
            "Conversion error: Conversion failed. File 'text.jpg' reverted to original extension "
            "'png'.",
        )
        self.assertEqual((self.folder / "text.png").read_bytes(), b"no picture")

    def test_it_speaks_russian(self):
        self.environment["LC_ALL"] = "ru_RU.UTF-8"
        self.startWithIcon(self.folder)
        self.waitUntilWatching(1)
        self.put("a.png")
        self.rename("a.png", "a.jpg")
        self.waitForMessages("Файл конвертирован: Успешно: a.png -> a.jpg")
        self.put("text.png", b"no picture")
        self.rename("text.png", "text.jpg")
        waitUntil(lambda: len(self.messages()) == 2, "two notifications")
        self.assertEqual(
            self.messages()[1],
            "Ошибка конвертации: Конвертация не удалась. Файл 'text.jpg' возвращен к исходному "
            "расширению 'png'.",
        )

    def test_folders_and_choices_survive_a_restart(self):
        self.startWithIcon(self.makeFolder("other"), self.folder)
        self.waitUntilWatching(2)
        popover = self.open()
        self.click(popover.x + 317, popover.y + 147)  # the first card's button
        self.waitUntilWatching(1)
        self.press("Escape")
        self.waitUntilClosed()

        self.switchNotifications()
        self.put("a.png")
        self.rename("a.png", "a.jpg")
        waitUntil(lambda: self.kindOf("a.jpg") == "image/jpeg", "the conversion")
        self.quit()
        self.assertEqual(self.messages(), [], "no notification of a success")

        self.start()
        self.waitForIcon()
        self.waitUntilWatching(1)
        self.switchNotifications()
        self.put("b.png")
        self.rename("b.png", "b.jpg")
        self.waitForMessages("File converted: Success: b.png -> b.jpg")
        self.quit()

    def test_the_application_and_the_headless_companion_never_work_on_the_saved_folders_at_once(self):
        self.startWithIcon(self.folder)
        self.waitUntilWatching(1)
        companion = self.program.with_name("kestrivane-watch")
        refused = self.startProgram(companion, stderr=subprocess.PIPE, text=True)
        self.assertIn("Kestrivane is running already", refused.communicate(timeout=PATIENCE)[1])
        self.assertNotEqual(refused.returncode, 0)
        self.quit()

        watch = self.startProgram(companion, stdout=subprocess.PIPE, text=True)
        self.assertEqual(watch.stdout.readline(), f"watching {self.folder}\n")
        self.start()
        self.assertEqual(self.application.wait(PATIENCE), 1)
        self.waitForMessages(
            "Kestrivane: kestrivane-watch is running already and watches the saved folders."
        )

    def switchNotifications(self):
        before = self.settings()
        popover = self.open()
        # The switch is at the right end of the first row of the settings.
        self.click(popover.x + 305, popover.y + 540 - 24 - 90)
        waitUntil(lambda: self.settings() != before, "the choice to be saved")
        self.press("Escape")
        self.waitUntilClosed()

    def settings(self):
        file = self.configuration / "defaults.json"
        return file.read_text() if file.exists() else ""

    def quit(self):
        self.open()
        self.press("Tab", "space")
        self.waitForEnd()

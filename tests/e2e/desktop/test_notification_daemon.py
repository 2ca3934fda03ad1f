"""Conversions as a real notification daemon shows them."""

import os

from desktop import DesktopTestCase
from dunst import Dunst
from pictures import smallPicture
from waiting import output


class NotificationDaemon(DesktopTestCase):
    def startNotifications(self):
        self.dunst = Dunst(self)

    def setUp(self):
        super().setUp()
        self.folder = self.makeFolder("watched")

    def rename(self, old, new):
        os.rename(self.folder / old, self.folder / new)

    def convertAndFail(self):
        """Converts one file, fails with another, and returns what was shown of each."""
        self.startWithIcon(self.folder)
        self.waitUntilWatching(1)
        (self.folder / "a & b.png").write_bytes(smallPicture(self.base).read_bytes())
        self.rename("a & b.png", "a & b.jpg")
        self.dunst.waitForDisplayed(1)
        success = self.dunst.takeDisplayed()
        kind = output("file", "--brief", "--mime-type", self.folder / "a & b.jpg")
        self.assertEqual(kind, "image/jpeg")

        (self.folder / "text.png").write_bytes(b"no picture")
        self.rename("text.png", "text.jpg")
        self.dunst.waitForDisplayed(2)
        failure = self.dunst.takeDisplayed()
        self.assertEqual((self.folder / "text.png").read_bytes(), b"no picture", "it is back")
        self.assertFalse((self.folder / "text.jpg").exists())
        return success, failure

    def test_it_shows_a_success_and_a_failure(self):
        success, failure = self.convertAndFail()
        self.assertEqual(success, ["File converted: Success: a & b.png -> a & b.jpg"])
        self.assertEqual(
            failure,
            [
                "Conversion error: Conversion error: Failed to read source image.",
                "Conversion error: Conversion failed. File 'text.jpg' reverted to original "
                "extension 'png'.",
            ],
        )

    def test_it_shows_them_in_russian(self):
        self.environment["LC_ALL"] = "ru_RU.UTF-8"
        success, failure = self.convertAndFail()
        self.assertEqual(success, ["Файл конвертирован: Успешно: a & b.png -> a & b.jpg"])
        self.assertEqual(
            failure,
            [
                "Ошибка конвертации: Ошибка конвертации: Не удалось прочитать изображение.",
                "Ошибка конвертации: Конвертация не удалась. Файл 'text.jpg' возвращен к исходному "
                "расширению 'png'.",
            ],
        )

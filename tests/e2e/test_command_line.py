"""Options, messages and exit statuses."""

import subprocess

import harness
from harness import WatchTestCase
from pictures import smallPicture
from waiting import PATIENCE


class CommandLine(WatchTestCase):
    def runToEnd(self, *arguments):
        return subprocess.run(
            [harness.program, *arguments],
            env=self.environment,
            capture_output=True,
            text=True,
            timeout=PATIENCE,
        )

    def test_help(self):
        done = self.runToEnd("--help")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("kestrivane-watch [FOLDER...]", done.stdout)

    def test_version(self):
        done = self.runToEnd("--version")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertRegex(done.stdout, r"^kestrivane-watch \d+\.\d+\.\d+\n$")

    def assertRefused(self, *arguments, names):
        done = self.runToEnd(*arguments)
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn(names, done.stderr)

    def test_options_that_lack_a_folder(self):
        self.assertRefused("--add", names="at least one folder")
        self.assertRefused("--remove", names="at least one folder")

    def test_an_unknown_option(self):
        self.assertRefused("--frobnicate", names="--frobnicate")

    def test_a_folder_that_does_not_exist(self):
        self.assertRefused(self.folder / "nowhere", names="nowhere")

    def test_a_file_instead_of_a_folder(self):
        file = smallPicture(self.base)
        self.assertRefused(file, names="small.png")

    def test_one_missing_folder_among_good_ones(self):
        self.assertRefused(self.folder, self.folder / "nowhere", names="nowhere")


class Language(WatchTestCase):
    def test_russian_texts(self):
        self.environment["LANG"] = "ru_RU.UTF-8"
        self.put(smallPicture(self.base), "фото.png")
        self.put(b"no picture", "плохо.png")
        self.start()
        self.rename("фото.png", "фото.jpg")
        self.rename("плохо.png", "плохо.jpg", reverted="плохо.png")
        self.assertPrinted(
            "Файл конвертирован: Успешно: фото.png -> фото.jpg",
            "Ошибка конвертации: Ошибка конвертации: Не удалось прочитать изображение.",
            "Ошибка конвертации: Конвертация не удалась. Файл 'плохо.jpg' возвращен к исходному "
            "расширению 'png'.",
        )

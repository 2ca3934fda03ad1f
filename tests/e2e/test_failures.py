"""What cannot be converted gets its old name back, and no byte of it has changed."""

import os
import resource
import shutil
import subprocess
import zlib

import harness
from harness import UNDECODABLE, UNREADABLE, WatchTestCase, criticalFailure, failure, success
from pictures import LARGE, SMALL, largePicture, sample, smallPicture
from waiting import output

NOBODY = 65534


class BadPictures(WatchTestCase):
    def assertRenamedBack(self, content, reasons=(UNREADABLE, UNDECODABLE)):
        self.put(content, "picture.png")
        before = self.read("picture.png")
        self.start()
        self.rename("picture.png", "picture.jpg", reverted="picture.png")
        self.watch.waitForLines(2)
        self.assertIn(
            tuple(self.watch.notifications()),
            [failure(reason, "picture.jpg", "png") for reason in reasons],
        )
        self.assertEqual(self.read("picture.png"), before)

    def test_a_text_file_with_a_pictures_name(self):
        self.assertRenamedBack(b"Dear diary, this is not a picture.\n")

    def test_an_empty_file(self):
        self.assertRenamedBack(b"", [UNREADABLE])

    def test_a_truncated_picture(self):
        content = sample("png").read_bytes()
        self.assertRenamedBack(content[: len(content) * 2 // 3], [UNDECODABLE])

    def test_a_header_that_claims_an_enormous_picture(self):
        small = smallPicture(self.base).read_bytes()
        enormous = (60000).to_bytes(4, "big")
        header = bytearray(small[12:29])  # type and content of the IHDR chunk
        header[4:12] = enormous * 2
        checksum = zlib.crc32(header).to_bytes(4, "big")
        self.assertRenamedBack(small[:12] + bytes(header) + checksum + small[33:])

    def test_the_old_name_comes_back_in_lower_case(self):
        self.put(b"no picture", "PICTURE.PNG")
        self.start()
        self.rename("PICTURE.PNG", "PICTURE.JPG", reverted="PICTURE.png")
        self.assertPrinted(*failure(UNREADABLE, "PICTURE.JPG", "png"))

    def test_a_file_that_has_the_old_name_is_never_overwritten(self):
        self.put(b"somebody else's", "picture.png")
        self.put(b"no picture", "picture.PNG")
        self.start()
        self.rename("picture.PNG", "picture.jpg")
        self.assertPrinted(f"Conversion error: {UNREADABLE}", criticalFailure("picture.jpg"))
        self.assertEqual(self.read("picture.png"), b"somebody else's")
        self.assertEqual(self.read("picture.jpg"), b"no picture")

    def test_a_rename_to_an_extension_that_nothing_converts_to_says_nothing(self):
        self.put(smallPicture(self.base), "picture.png")
        self.put(smallPicture(self.base), "witness.png")
        self.start()
        self.rename("picture.png", "picture.txt")
        # The witness is handled after it and shows that it has been passed over.
        self.rename("witness.png", "witness.jpg")
        self.assertPrinted(success("witness.png", "witness.jpg"))
        self.assertEqual(self.read("picture.txt"), smallPicture(self.base).read_bytes())

    def test_a_rename_that_keeps_the_extension_says_nothing(self):
        self.put(smallPicture(self.base), "picture.PNG")
        self.put(smallPicture(self.base), "witness.png")
        self.start()
        self.rename("picture.PNG", "another.png")
        self.rename("witness.png", "witness.jpg")
        self.assertPrinted(success("witness.png", "witness.jpg"))


class NoPermission(WatchTestCase):
    """The program runs without privileges here, because nothing is forbidden to root."""

    def startUnprivileged(self):
        if os.geteuid() != 0:
            return self.start()
        # A copy, because the folder of the built program may be closed to others.
        executable = self.base / "kestrivane-watch"
        shutil.copy(harness.program, executable)
        for here, _, files in os.walk(self.base):
            for path in (here, *(os.path.join(here, name) for name in files)):
                os.chown(path, NOBODY, NOBODY)
        identity = (f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups")
        return self.start(launcher=("setpriv", *identity, executable))

    def test_a_folder_that_cannot_be_written_to(self):
        self.put(largePicture(self.base), "closed/picture.png")
        self.startUnprivileged()
        self.rename("closed/picture.png", "closed/picture.heic")
        self.waitForTemporaryFile()
        os.chmod(self.path("closed"), 0o555)
        self.addCleanup(os.chmod, self.path("closed"), 0o755)
        self.watch.waitForLines(2)
        self.assertRegex(self.watch.notifications()[0], "^Conversion error: .*picture.heic")
        self.assertEqual(self.watch.notifications()[1], criticalFailure("picture.heic"))
        self.assertEqual(self.read("closed/picture.heic"), largePicture(self.base).read_bytes())
        self.takeKeptCopy("heic", LARGE)

    def test_a_file_that_cannot_be_read(self):
        path = self.put(smallPicture(self.base), "picture.png")
        os.chmod(path, 0)
        self.startUnprivileged()
        self.rename("picture.png", "picture.jpg", reverted="picture.png")
        self.assertPrinted(*failure(UNREADABLE, "picture.jpg", "png"))
        os.chmod(path, 0o600)
        self.assertEqual(self.read("picture.png"), smallPicture(self.base).read_bytes())


class FullDisk(WatchTestCase):
    def test_a_limit_on_the_size_of_files(self):
        self.put(sample("png"), "picture.png")
        self.start(prepare=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000)))
        self.rename("picture.png", "picture.bmp", reverted="picture.png")
        self.assertPrinted(
            *failure("Conversion error: Ошибка записи файла bmp.", "picture.bmp", "png")
        )
        self.assertEqual(self.read("picture.png"), sample("png").read_bytes())

    def test_a_temporary_folder_that_is_full(self):
        self.mountSmall(self.temporary)
        self.put(sample("png"), "picture.png")
        self.start()
        self.rename("picture.png", "picture.bmp", reverted="picture.png")
        self.assertPrinted(
            *failure("Conversion error: Ошибка записи файла bmp.", "picture.bmp", "png")
        )
        self.assertEqual(self.read("picture.png"), sample("png").read_bytes())

    def test_a_watched_folder_that_is_full(self):
        self.mountSmall(self.folder)
        self.put(smallPicture(self.base), "picture.png")
        free = os.statvfs(self.folder).f_bavail * os.statvfs(self.folder).f_frsize
        self.put(bytes(free), "ballast")
        self.start()
        self.rename("picture.png", "picture.bmp", reverted="picture.png")
        self.watch.waitForLines(2)
        error, outcome = self.watch.notifications()
        self.assertRegex(error, "^Conversion error: .")
        self.assertEqual(outcome, failure("", "picture.bmp", "png")[1])
        self.assertEqual(self.read("picture.png"), smallPicture(self.base).read_bytes())
        os.remove(self.path("ballast"))
        self.expected.remove(b"ballast")
        self.takeKeptCopy("bmp", SMALL)

    def mountSmall(self, folder):
        """Puts a file system of 64 kilobytes at this folder."""
        mounted = subprocess.run(
            ["mount", "-t", "tmpfs", "-o", "size=64k,mode=700", "kestrivane-test", folder],
            capture_output=True,
        )
        if mounted.returncode != 0:
            self.skipTest(f"no file system may be mounted here: {mounted.stderr.decode().strip()}")
        self.addCleanup(output, "umount", "--lazy", folder)

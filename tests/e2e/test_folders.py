"""Where files are: nested, new, renamed and vanishing folders, and many files at once."""

import os
import shutil

from harness import UNREADABLE, WatchTestCase, failure, criticalFailure, success
from pictures import LARGE, SMALL, largePicture, smallPicture
from waiting import waitUntil


class Folders(WatchTestCase):
    def test_files_in_nested_folders_are_converted(self):
        names = ["a/photo", "a/b/photo", "a/b/c/d/e/f/g/photo"]
        for name in names:
            self.put(smallPicture(self.base), f"{name}.png")
        self.start()
        for name in names:
            self.rename(f"{name}.png", f"{name}.jpg")
        self.assertPrinted(*[success("photo.png", "photo.jpg")] * len(names))
        for name in names:
            self.assertPicture(f"{name}.jpg", "jpg", SMALL)

    def test_a_deep_folder_made_while_watching_is_watched(self):
        self.start()
        before = self.watch.watchedDirectories()
        self.put(smallPicture(self.base), "new/one/two/three/four/photo.png")
        waitUntil(
            lambda: self.watch.watchedDirectories() == before + 5, "watches of the five new folders"
        )
        self.rename("new/one/two/three/four/photo.png", "new/one/two/three/four/photo.jpg")
        self.assertPrinted(success("photo.png", "photo.jpg"))
        self.assertPicture("new/one/two/three/four/photo.jpg", "jpg", SMALL)

    def test_a_renamed_folder_is_watched_under_its_new_name(self):
        self.put(smallPicture(self.base), "before/inner/photo.png")
        self.start()
        os.rename(self.path("before"), self.path("after"))
        self.expected = {b"after/inner/photo.png"}
        self.rename("after/inner/photo.png", "after/inner/photo.gif")
        self.assertPrinted(success("photo.png", "photo.gif"))
        self.assertPicture("after/inner/photo.gif", "gif", SMALL)

    def test_two_hundred_renames_at_once_in_one_folder(self):
        self.renameAtOnce([self.folder], 200)

    def test_two_hundred_renames_at_once_in_forty_folders(self):
        folders = [self.folder / f"folder {number}" for number in range(40)]
        self.renameAtOnce(folders, 5)

    def test_a_folder_removed_while_converting_harms_nothing_else(self):
        other = self.folder / "other"
        doomed = self.folder / "doomed"
        self.put(largePicture(self.base), "doomed/large.png")
        self.put(smallPicture(self.base), "other/photo.png")
        self.start(doomed, other)
        os.rename(doomed / "large.png", doomed / "large.heic")
        self.waitForTemporaryFile()
        shutil.rmtree(doomed)
        self.expected.remove(b"doomed/large.png")
        self.watch.waitForLines(2)
        error, outcome = self.watch.notifications()
        self.assertRegex(error, "^Conversion error: .")
        self.assertEqual(outcome, criticalFailure("large.heic"))
        # It is all that is left of that picture.
        self.takeKeptCopy("heic", LARGE)

        self.rename("other/photo.png", "other/photo.jpg")
        self.watch.waitForLine(success("photo.png", "photo.jpg"))
        self.assertPicture("other/photo.jpg", "jpg", SMALL)

    def test_a_folder_with_a_pictures_name_gets_its_name_back(self):
        self.put(b"inside", "album.png/note.txt")
        self.start()
        os.rename(self.path("album.png"), self.path("album.jpg"))
        self.assertPrinted(*failure(UNREADABLE, "album.jpg", "png"))
        self.assertEqual(self.read("album.png/note.txt"), b"inside")

    def test_a_file_moved_in_from_elsewhere_is_left_alone(self):
        self.put(smallPicture(self.base), "inside.png")
        outside = self.base / "outside.png"
        shutil.copyfile(smallPicture(self.base), outside)
        self.start()
        os.rename(outside, self.path("outside.jpg"))
        self.expected.add(b"outside.jpg")
        # A conversion afterwards shows that the move has been seen and passed over.
        self.rename("inside.png", "inside.jpg")
        self.assertPrinted(success("inside.png", "inside.jpg"))
        self.assertPicture("outside.jpg", "png", SMALL)

    def test_every_folder_given_is_watched(self):
        folders = [self.folder / "one", self.folder / "two"]
        for folder in folders:
            self.put(smallPicture(self.base), f"{folder.name}/photo.png")
        self.start(*folders)
        for folder in folders:
            self.rename(f"{folder.name}/photo.png", f"{folder.name}/photo.bmp")
        self.assertPrinted(*[success("photo.png", "photo.bmp")] * 2)

    def renameAtOnce(self, folders, each):
        names = [
            str((folder / f"photo {number}").relative_to(self.folder))
            for folder in folders
            for number in range(each)
        ]
        for name in names:
            self.put(smallPicture(self.base), f"{name}.png")
        self.start(*folders)
        for name in names:
            self.rename(f"{name}.png", f"{name}.jpg")
        self.assertPrinted(
            *[success(f"{os.path.basename(n)}.png", f"{os.path.basename(n)}.jpg") for n in names]
        )
        for name in names:
            self.assertPicture(f"{name}.jpg", "jpg", SMALL)

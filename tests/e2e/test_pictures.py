"""Each of the nine extensions renamed to each of the others, and what stays of the file."""

import os

from harness import WatchTestCase, success
from pictures import FORMATS, SMALL, iconSide, sample, sizeOf, smallPicture


class PicturePairs(WatchTestCase):
    """One test for each of the 72 ordered pairs; they are added below."""

    def convert(self, old, new):
        size = sizeOf(sample(old))
        preparation = ()
        if new == "ico":
            side, size = min(size), (iconSide(size),) * 2
            square = f"{side}x{side}+0+0"
            preparation = ("-gravity", "center", "-crop", square, "+repage")
            preparation += ("-resize", f"{size[0]}x{size[1]}!")
        self.put(sample(old), f"photo.{old}")
        self.start()
        self.rename(f"photo.{old}", f"photo.{new}")
        self.assertPrinted(success(f"photo.{old}", f"photo.{new}"))
        self.assertPicture(f"photo.{new}", new, size)
        self.assertLooksLike(f"photo.{new}", new, sample(old), *preparation)


def addPair(old, new):
    def test(self):
        self.convert(old, new)

    test.__name__ = f"test_{old}_to_{new}"
    test.__qualname__ = f"PicturePairs.{test.__name__}"
    setattr(PicturePairs, test.__name__, test)


for _old in FORMATS:
    for _new in FORMATS:
        if _old != _new:
            addPair(_old, _new)


class Attributes(WatchTestCase):
    def test_the_converted_file_has_the_mode_and_the_attributes_of_the_original(self):
        path = self.put(smallPicture(self.base), "photo.png")
        os.chmod(path, 0o604)
        os.setxattr(path, "user.rating", b"five stars")
        self.start()
        self.rename("photo.png", "photo.jpg")
        self.assertPrinted(success("photo.png", "photo.jpg"))
        self.assertPicture("photo.jpg", "jpg", SMALL)
        converted = self.path("photo.jpg")
        self.assertEqual(os.stat(converted).st_mode & 0o7777, 0o604)
        self.assertEqual(os.getxattr(converted, "user.rating"), b"five stars")

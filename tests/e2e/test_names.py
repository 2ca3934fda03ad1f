"""File names are bytes: whatever they are, the file is converted and the output is valid UTF-8."""

from harness import UNREADABLE, WatchTestCase, failure, success
from pictures import SMALL, smallPicture


class Names(WatchTestCase):
    def assertConverted(self, old, new, shownOld, shownNew):
        self.put(smallPicture(self.base), old)
        self.start()
        self.rename(old, new)
        self.assertPrinted(success(shownOld, shownNew))
        self.assertPicture(new, "jpg", SMALL)

    def test_a_name_that_is_not_utf8(self):
        self.assertConverted(
            b"\xff\xe9t\xe9.png",
            b"\xff\xe9t\xe9.jpg",
            "\ufffd\ufffdt\ufffd.png",
            "\ufffd\ufffdt\ufffd.jpg",
        )

    def test_a_name_with_a_line_feed(self):
        self.assertConverted(
            "two\nlines.png", "two\nlines.jpg", r"two\nlines.png", r"two\nlines.jpg"
        )

    def test_a_name_with_an_apostrophe(self):
        self.assertConverted("it's.png", "it's.jpg", "it's.png", "it's.jpg")

    def test_a_name_with_an_arrow(self):
        self.assertConverted("a -> b.png", "a -> b.jpg", "a -> b.png", "a -> b.jpg")

    def test_a_name_that_looks_like_an_option(self):
        self.assertConverted("--help.png", "--help.jpg", "--help.png", "--help.jpg")

    def test_a_name_that_looks_like_a_pattern(self):
        self.assertConverted("%d[0]*?.png", "%d[0]*?.jpg", "%d[0]*?.png", "%d[0]*?.jpg")

    def test_a_hidden_file(self):
        self.assertConverted(".hidden.png", ".hidden.jpg", ".hidden.png", ".hidden.jpg")

    def test_a_name_of_255_bytes(self):
        stem = "ж" * 125 + "w"
        self.assertEqual(len(f"{stem}.png".encode()), 255)
        self.assertConverted(f"{stem}.png", f"{stem}.jpg", f"{stem}.png", f"{stem}.jpg")

    def test_a_long_name_comes_back(self):
        stem = "w" * 251
        self.put(b"no picture", f"{stem}.png")
        self.start()
        self.rename(f"{stem}.png", f"{stem}.jpg", reverted=f"{stem}.png")
        self.assertPrinted(*failure(UNREADABLE, f"{stem}.jpg", "png"))

    def test_a_cyrillic_name_in_upper_case(self):
        self.assertConverted("ФОТО.PNG", "ФОТО.JPG", "ФОТО.PNG", "ФОТО.JPG")

    def test_only_the_last_extension_counts(self):
        self.assertConverted(
            "archive.tar.png", "archive.tar.jpg", "archive.tar.png", "archive.tar.jpg"
        )

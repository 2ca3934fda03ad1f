"""What the tables in docs/ name exists: tests and packages."""

import importlib
import re
import unittest

from pictures import SAMPLES

ROOT = SAMPLES.parent.parent


class Promises(unittest.TestCase):
    def test_of_pictures(self):
        self.check("docs/pictures.md", "tests/platform/images")

    def test_of_videos(self):
        self.check("docs/videos.md", "tests/platform/media")

    def test_of_dependencies(self):
        table = (ROOT / "docs" / "dependencies.md").read_text()
        listings = sorted((ROOT / "packaging" / "packages").glob("*.txt"))
        self.assertTrue(listings)
        for listing in listings:
            entries = re.findall(r"^([^#\s]+) ", listing.read_text(), re.M)
            self.assertTrue(entries, listing.name)
            for package in "|".join(entries).split("|"):
                with self.subTest(package=package, listing=listing.name):
                    self.assertIn(f"`{package}`", table)

    def check(self, document, folder):
        inCpp = set()
        for source in (ROOT / folder).glob("*Tests.cpp"):
            inCpp |= set(re.findall(r"^TEST(?:_F|_P)?\((\w+), (\w+)\)", source.read_text(), re.M))
        rows = rowsOf((ROOT / document).read_text())
        self.assertGreater(len(rows), 10)
        for row in rows:
            names = re.findall(r"`([\w.]+)`", row)
            self.assertTrue(names, row)
            for name in names:
                with self.subTest(name=name):
                    if name.startswith("test_"):
                        module, *path = name.split(".")
                        found = importlib.import_module(module)
                        for part in path:
                            found = getattr(found, part, None)
                        self.assertIsNotNone(found)
                    else:
                        self.assertIn(tuple(name.split(".")), inCpp)


def rowsOf(text):
    """The last cells of all tables whose last column is headed "tests"."""
    cells = []
    for table in re.findall(r"^\|.* tests \|\n\|[-| ]+\n((?:\|.*\n)+)", text, re.M):
        cells += [row.split("|")[-2] for row in table.splitlines()]
    return cells

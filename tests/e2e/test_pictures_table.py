"""Each test that docs/pictures.md names exists."""

import importlib
import re
import unittest

from pictures import SAMPLES

ROOT = SAMPLES.parent.parent


class PicturesTable(unittest.TestCase):
    def test_names_only_tests_that_exist(self):
        text = (ROOT / "docs/pictures.md").read_text()
        table = text[text.index("| what | promise | tests |") :].split("\n\n")[0]
        rows = table.splitlines()
        self.assertGreater(len(rows), 10)
        inCpp = set()
        for source in (ROOT / "tests/platform/images").glob("*Tests.cpp"):
            inCpp |= set(re.findall(r"^TEST(?:_F|_P)?\((\w+), (\w+)\)", source.read_text(), re.M))
        for row in rows[2:]:
            names = re.findall(r"`([\w.]+)`", row.split("|")[3])
            self.assertTrue(names, row)
            for name in names:
                with self.subTest(name=name):
                    if name.startswith("test_"):
                        module, case, test = name.split(".")
                        self.assertTrue(hasattr(getattr(importlib.import_module(module), case), test))
                    else:
                        self.assertIn(tuple(name.split(".")), inCpp)

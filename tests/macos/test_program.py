"""Checks that the sources of macOS make a whole program: every symbol of ours that one of them needs is defined by
another, what they need of the system is in the frameworks that they are linked with, and every interface of platform/
has an adapter that the application uses.

    test_program.py NM FILE...

NM lists the symbols of objects and archives, those of macOS too; the FILEs are what the application is linked of.
"""

import functools
import pathlib
import re
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SDK = ROOT / "tests" / "macos" / "sdk"
OURS = re.compile(
    r"_Z\w*?10kestrivane|qml_register_types_|OBJC_CLASS_\$_(MenubarDragView|Popover|Status)"
)
# C++ of others may stand in front: a template of the standard library with a type of ours.
OF_OTHERS = re.compile(r"_ZN?K?(St|9__gnu_cxx)|_ZT[ISV](St|N?K?St)")
FOLDERS = ("app/macos", "platform/macos")
# Folders of the declarations that the system's own library defines.
ALWAYS_LINKED = {"dispatch", "os", "sys", "."}


def symbols_of(nm, path):
    """The names that the file defines for others, and those that it needs."""
    listing = subprocess.run(
        [nm, "--format=posix", "--extern-only", path], capture_output=True, text=True, check=True
    ).stdout
    # On macOS a name has one underscore more.
    skipped = 1 if path.read_bytes()[:4] == b"\xcf\xfa\xed\xfe" else 0
    defined, needed = set(), set()
    for line in listing.splitlines():
        fields = line.split()
        if len(fields) < 2:
            continue  # the name of an archive's member
        name, kind = fields[0][skipped:], fields[1]
        (needed if kind in "Uw" else defined).add(name)
    return defined, needed


def text_of(*parts):
    return ROOT.joinpath(*parts).read_text()


@functools.cache
def words_of_sdk():
    """For every word of the declarations, the frameworks that have it."""
    words = {}
    for header in SDK.rglob("*.h"):
        folder = header.relative_to(SDK).parent.as_posix()
        for word in re.findall(r"\w+", header.read_text()):
            words.setdefault(word, set()).add(folder)
    return words


class SymbolsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        nm, *files = sys.argv[1:]
        cls.defined, cls.needed = set(), set()
        for file in files:
            defined, needed = symbols_of(nm, pathlib.Path(file))
            cls.defined |= defined
            cls.needed |= needed

    def test_every_symbol_of_ours_is_defined(self):
        ours = {name for name in self.needed if OURS.match(name) and not OF_OTHERS.match(name)}
        self.assertGreater(len(ours), 100, "hardly any symbols: is this the whole program?")
        self.assertEqual(sorted(ours - self.defined), [])

    def test_what_the_system_defines_is_in_a_framework_that_is_linked(self):
        linked = {"Sparkle"} | set(
            re.findall(
                r"-framework (\w+)",
                text_of("platform/macos/CMakeLists.txt") + text_of("app/macos/CMakeLists.txt"),
            )
        )
        used, missing = set(), set()
        for name in self.needed - self.defined:
            folders = words_of_sdk().get(name.removeprefix("OBJC_CLASS_$_"), set())
            used |= folders
            if folders and not folders & (linked | ALWAYS_LINKED):
                missing.add(name)
        self.assertEqual(sorted(missing), [])
        self.assertEqual(sorted(linked - used), [], "linked, and nothing of it is used")


class AdaptersTest(unittest.TestCase):
    """By the words of the sources: an interface is a class with an operation that is pure."""

    @classmethod
    def setUpClass(cls):
        cls.interfaces = {
            match[1]
            for header in (ROOT / "platform").glob("*.hpp")
            for match in re.finditer(r"^class (\w+) \{(.*?)^\};", header.read_text(), re.M | re.S)
            if "= 0;" in match[2]
        }
        cls.implemented = {
            interface
            for folder in ("app", *FOLDERS, "platform/qt")
            for source in (ROOT / folder).glob("*.?*")
            for interface in re.findall(
                r"^class \w+ final : public (\w+)", source.read_text(), re.M
            )
        }

    def test_every_interface_has_an_adapter(self):
        self.assertGreater(len(self.interfaces), 20)
        self.assertEqual(sorted(self.interfaces - self.implemented), [])

    def test_every_adapter_that_others_can_see_is_used(self):
        files = [path for folder in FOLDERS for path in (ROOT / folder).iterdir()]
        # Including a header is no use of it.
        texts = {path: re.sub(r"^#.*", "", path.read_text(), flags=re.M) for path in files}
        seen = [
            (adapter, path)
            for path, text in texts.items()
            for adapter in re.findall(r"^class (\w+) final : public \w+", text, re.M)
            if path.suffix == ".hpp"
        ]
        self.assertGreater(len(seen), 15)
        for adapter, header in seen:
            users = [
                path.name
                for path, text in texts.items()
                if path.stem != header.stem
                and path.suffix in (".cpp", ".mm")
                and re.search(rf"\b{adapter}\b", text)
            ]
            self.assertNotEqual(users, [], f"nothing uses {adapter}")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)

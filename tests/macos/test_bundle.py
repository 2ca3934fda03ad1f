"""Checks Kestrivane.app as its install step lays it out. That step needs no Mac: files that stand in for the
program, the tool and the framework are packed by the same rules.
"""

import os
import pathlib
import plistlib
import struct
import subprocess
import tempfile
import unittest

from PIL import Image

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGING = ROOT / "packaging" / "macos"
FEED = "https://updates.example.com/feed.xml?channel=stable&system=macos"
KEY = "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8="


def run(*command):
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode != 0:
        raise AssertionError(f"{command} failed:\n{done.stdout}{done.stderr}")


def load(path):
    return plistlib.loads(path.read_bytes())


def program(path, text):
    path.write_text(f"#!/bin/sh\necho {text}\n")
    path.chmod(0o755)
    return path


class BundleTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        work = pathlib.Path(folder.name)
        framework = work / "Sparkle.framework"
        (framework / "Versions" / "B").mkdir(parents=True)
        program(framework / "Versions" / "B" / "Sparkle", "Sparkle")
        (framework / "Versions" / "Current").symlink_to("B")
        (framework / "Sparkle").symlink_to("Versions/Current/Sparkle")
        run(
            "cmake", "-S", PACKAGING, "-B", work / "build",
            f"-DKESTRIVANE_EXECUTABLE={program(work / 'the-program', 'Kestrivane')}",
            f"-DKESTRIVANE_FFMPEG={program(work / 'ffmpeg-static', 'ffmpeg')}",
            f"-DKESTRIVANE_SPARKLE={framework}",
            f"-DKESTRIVANE_FEED_ADDRESS={FEED}",
            f"-DKESTRIVANE_FEED_KEY={KEY}",
            "-DKESTRIVANE_MINIMUM_MACOS=13.0",
        )  # fmt: skip
        run("cmake", "--build", work / "build")
        run("cmake", "--install", work / "build", "--prefix", work / "installed")
        cls.installed = work / "installed"
        cls.contents = cls.installed / "Kestrivane.app" / "Contents"
        cls.information = load(cls.contents / "Info.plist")

    def test_the_bundle_holds_these_files_and_no_others(self):
        files = {
            str(path.relative_to(self.contents))
            for path in self.contents.rglob("*")
            if path.is_symlink() or not path.is_dir()
        }
        self.assertEqual(
            files,
            {
                "Info.plist",
                "MacOS/Kestrivane",
                "MacOS/ffmpeg",
                "Frameworks/Sparkle.framework/Sparkle",
                "Frameworks/Sparkle.framework/Versions/Current",
                "Frameworks/Sparkle.framework/Versions/B/Sparkle",
                "Resources/Kestrivane.icns",
                "Resources/LICENSE",
                "Resources/kestrivane-icon.png",
                "Resources/kestrivane-icon@2x.png",
                "Resources/menubar-icon.png",
                "Resources/menubar-icon@2x.png",
            },
        )
        self.assertEqual([path.name for path in self.installed.iterdir()], ["Kestrivane.app"])

    def test_the_information_names_what_the_bundle_holds(self):
        program = self.contents / "MacOS" / self.information["CFBundleExecutable"]
        self.assertEqual(subprocess.check_output([program], text=True), "Kestrivane\n")
        icon = self.contents / "Resources" / (self.information["CFBundleIconFile"] + ".icns")
        self.assertTrue(icon.is_file())
        self.assertEqual(self.information["CFBundlePackageType"], "APPL")

    def test_the_tool_lies_beside_the_program_and_can_be_run(self):
        tool = self.contents / "MacOS" / "ffmpeg"
        self.assertEqual(subprocess.check_output([tool], text=True), "ffmpeg\n")

    def test_the_framework_keeps_its_links(self):
        framework = self.contents / "Frameworks" / "Sparkle.framework"
        self.assertEqual(os.readlink(framework / "Versions" / "Current"), "B")
        self.assertEqual(os.readlink(framework / "Sparkle"), "Versions/Current/Sparkle")

    def test_the_application_is_an_accessory(self):
        self.assertIs(self.information["LSUIElement"], True)
        self.assertEqual(self.information["NSPrincipalClass"], "NSApplication")

    def test_the_updater_finds_its_feed_and_its_key(self):
        self.assertEqual(self.information["SUFeedURL"], FEED)
        self.assertEqual(self.information["SUPublicEDKey"], KEY)
        self.assertIs(self.information["SUEnableInstallerLauncherService"], True)

    def test_the_information_says_version_system_and_languages(self):
        self.assertRegex(self.information["CFBundleVersion"], r"^\d+\.\d+\.\d+$")
        self.assertEqual(
            self.information["CFBundleShortVersionString"], self.information["CFBundleVersion"]
        )
        self.assertEqual(self.information["LSMinimumSystemVersion"], "13.0")
        self.assertEqual(set(self.information["CFBundleLocalizations"]), {"en", "ru"})

    def test_the_version_is_that_of_the_whole_project(self):
        self.assertIn(
            f"project(Kestrivane VERSION {self.information['CFBundleVersion']} ",
            (ROOT / "CMakeLists.txt").read_text(),
        )

    def test_pictures_are_there_for_both_scales(self):
        for name, points in {"menubar-icon": 18, "kestrivane-icon": 42}.items():
            for suffix, scale in {"": 1, "@2x": 2}.items():
                with Image.open(self.contents / "Resources" / f"{name}{suffix}.png") as picture:
                    self.assertEqual(picture.size, (points * scale, points * scale))
                    alpha = picture.convert("RGBA").getchannel("A").getextrema()
                    self.assertEqual(alpha[0], 0, "nothing of it is transparent")
                    self.assertGreater(alpha[1], 250, "nothing of it is opaque")

    def test_the_icon_file_has_every_size(self):
        data = (self.contents / "Resources" / "Kestrivane.icns").read_bytes()
        self.assertEqual(data[:8], b"icns" + struct.pack(">I", len(data)))
        with Image.open(self.contents / "Resources" / "Kestrivane.icns") as icon:
            sizes = {(width, scale) for width, height, scale in icon.info["sizes"]}
        points = (16, 32, 128, 256, 512)
        self.assertEqual(sizes, {(side, scale) for side in points for scale in (1, 2)})

    def test_a_part_that_is_missing_is_named(self):
        with tempfile.TemporaryDirectory() as build:
            done = subprocess.run(
                ["cmake", "-S", PACKAGING, "-B", build], capture_output=True, text=True
            )
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("KESTRIVANE_FFMPEG is ''", done.stderr)


class EntitlementsTest(unittest.TestCase):
    def test_the_application_may_do_what_it_needs_and_no_more(self):
        identifier = plistlib.loads((PACKAGING / "Info.plist.in").read_bytes())[
            "CFBundleIdentifier"
        ]
        self.assertEqual(
            load(PACKAGING / "Kestrivane.entitlements"),
            {
                "com.apple.security.app-sandbox": True,
                "com.apple.security.files.user-selected.read-write": True,
                "com.apple.security.files.bookmarks.app-scope": True,
                "com.apple.security.network.client": True,
                "com.apple.security.temporary-exception.mach-lookup.global-name": [
                    f"{identifier}-spks",
                    f"{identifier}-spki",
                ],
            },
        )

    def test_the_tool_inherits_the_sandbox_and_has_nothing_else(self):
        self.assertEqual(
            load(PACKAGING / "ffmpeg.entitlements"),
            {"com.apple.security.app-sandbox": True, "com.apple.security.inherit": True},
        )


class SigningTest(unittest.TestCase):
    """Over a codesign that writes down how it is called."""

    FRAMEWORKS = "Contents/Frameworks/"
    SPARKLE = FRAMEWORKS + "Sparkle.framework"
    PARTS = (
        SPARKLE + "/Versions/B/XPCServices/Installer.xpc",
        SPARKLE + "/Versions/B/XPCServices/Downloader.xpc",
        SPARKLE + "/Versions/B/Autoupdate",
        SPARKLE + "/Versions/B/Updater.app",
        FRAMEWORKS + "QtCore.framework",
        FRAMEWORKS + "libavif.16.dylib",
        "Contents/PlugIns/platforms/libqcocoa.dylib",
        "Contents/MacOS/ffmpeg",
    )

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.app = self.folder / "Kestrivane.app"
        for part in self.PARTS:
            (self.app / part).parent.mkdir(parents=True, exist_ok=True)
            (self.app / part).write_text("")
        codesign = self.folder / "codesign"
        codesign.write_text(f'#!/bin/sh\nprintf "%s\\n" "$*" >> "{self.folder}/calls"\n')
        codesign.chmod(0o755)

    def calls(self, identity):
        """The signed part and the other arguments of each call."""
        subprocess.run(
            [PACKAGING / "sign.sh", self.app, identity],
            env={**os.environ, "PATH": f"{self.folder}:{os.environ['PATH']}"},
            check=True,
        )
        lines = (self.folder / "calls").read_text().splitlines()
        parts = [line.rpartition(" ") for line in lines]
        return [(os.path.relpath(part, self.app), arguments) for arguments, _, part in parts]

    def test_everything_is_signed_before_what_it_lies_in(self):
        *signed, (verified, verification) = self.calls("Developer ID Application: Somebody")
        names = [name for name, _ in signed]
        self.assertEqual(sorted(names), sorted([*self.PARTS, self.SPARKLE, "."]))
        for name in names[:-1]:
            outer = [other for other in names if name.startswith(other + "/")]
            for other in outer:
                self.assertLess(names.index(name), names.index(other))
        self.assertEqual(names[-1], ".")
        self.assertEqual((verified, verification), (".", "--verify --deep --strict"))
        for _, arguments in signed:
            self.assertIn("--timestamp --options runtime --sign Developer ID", arguments)
            self.assertNotIn("--deep", arguments)

    def test_only_the_program_and_the_tool_get_entitlements_of_ours(self):
        entitled = {
            name: pathlib.Path(arguments.partition("--entitlements ")[2]).name
            for name, arguments in self.calls("-")
            if "--entitlements" in arguments
        }
        self.assertEqual(
            entitled,
            {".": "Kestrivane.entitlements", "Contents/MacOS/ffmpeg": "ffmpeg.entitlements"},
        )

    def test_without_a_certificate_the_runtime_is_not_hardened(self):
        for _, arguments in self.calls("-"):
            self.assertNotIn("runtime", arguments)


if __name__ == "__main__":
    unittest.main()

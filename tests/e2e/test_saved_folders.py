"""The saved list: folders that are added and removed by the command line, and a program that watches
what is in it."""

import json
import os
import pathlib
import shutil
import subprocess

import harness
from harness import Watch, WatchTestCase, failure, success, UNREADABLE
from pictures import SMALL, smallPicture
from waiting import PATIENCE, output, waitUntil

KEY = "com.kestrivane.monitoredBookmarks"


class SavedFoldersTestCase(WatchTestCase):
    def setUp(self):
        super().setUp()
        self.configuration = self.base / "configuration" / "kestrivane"
        self.defaults = self.configuration / "defaults.json"
        self.environment["XDG_CONFIG_HOME"] = str(self.configuration.parent)

    def command(self, *arguments, status=0):
        """Runs the program to its end; its standard output and standard error, by lines."""
        done = subprocess.run(
            [harness.program, *arguments],
            env=self.environment,
            cwd=self.base,
            capture_output=True,
            text=True,
            timeout=PATIENCE,
        )
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stdout.splitlines(), done.stderr.splitlines()

    def saved(self):
        return self.command("--list")[0]

    def makeFolder(self, name):
        folder = self.folder / name
        folder.mkdir(parents=True)
        return str(folder)

    def startOnSaved(self, *folders):
        self.watch = Watch([], self.environment)
        self.addCleanup(self.watch.process.kill)
        for folder in folders:
            self.watch.waitForLine(f"watching {folder}")
        return self.watch

    def convert(self, folder, name="photo"):
        """Renames a picture in the folder and waits until it has been converted."""
        inside = os.path.relpath(folder, self.folder)
        self.put(smallPicture(self.base), f"{inside}/{name}.png")
        self.rename(f"{inside}/{name}.png", f"{inside}/{name}.jpg")
        self.watch.waitForLine(success(f"{name}.png", f"{name}.jpg"))
        self.assertPicture(f"{inside}/{name}.jpg", "jpg", SMALL)


class List(SavedFoldersTestCase):
    def test_folders_are_added_shown_and_removed(self):
        a, b = self.makeFolder("a"), self.makeFolder("b")
        self.assertEqual(self.saved(), [])
        self.assertEqual(self.command("--add", b, a), ([f"added {b}", f"added {a}"], []))
        self.assertEqual(self.command("--add", a), ([], []))
        self.assertEqual(self.saved(), [b, a])
        self.assertEqual(self.command("--remove", b), ([f"removed {b}"], []))
        self.assertEqual(self.saved(), [a])

    def test_a_folder_is_the_same_with_dots_and_slashes(self):
        a = self.makeFolder("a")
        self.command("--add", "watched/../watched/./a//")
        self.assertEqual(self.saved(), [a])
        self.assertEqual(self.command("--add", a + "/"), ([], []))
        self.assertEqual(self.command("--remove", "watched/a/"), ([f"removed {a}"], []))

    def test_names_of_any_bytes_are_kept(self):
        a = self.folder / os.fsdecode(b"line\nfeed \xff")
        a.mkdir()
        self.command("--add", a)
        self.assertEqual(self.saved(), [f"{self.folder}/line\\nfeed \ufffd"])
        self.command("--remove", a)
        self.assertEqual(self.saved(), [])

    def test_what_cannot_be_done_is_said_and_the_rest_is_done(self):
        a, gone = self.makeFolder("a"), self.makeFolder("gone")
        _, complaints = self.command("--add", a, self.folder / "nowhere", status=2)
        self.assertIn("nowhere", complaints[0])
        self.assertEqual(self.saved(), [])
        self.command("--add", a, gone)
        output, complaints = self.command("--remove", self.folder / "nowhere", a, status=2)
        self.assertEqual(output, [f"removed {a}"])
        self.assertIn("not in the list", complaints[0])

    def test_a_folder_that_is_gone_stays_in_the_list_until_it_is_removed(self):
        a, gone = self.makeFolder("a"), self.makeFolder("gone")
        self.command("--add", gone)
        os.rmdir(gone)
        self.command("--add", a)
        output, complaints = self.command("--list")
        self.assertEqual(output, [gone, a])
        self.assertEqual(len(complaints), 1)
        self.assertIn("it is no longer there", complaints[0])
        self.assertEqual(self.command("--remove", gone)[0], [f"removed {gone}"])

    def test_many_programs_may_change_the_list_at_once(self):
        folders = [self.makeFolder(f"folder {number}") for number in range(20)]
        programs = [
            subprocess.Popen(
                [harness.program, "--add", folder],
                env=self.environment,
                stdout=subprocess.DEVNULL,
            )
            for folder in folders
        ]
        for program in programs:
            self.assertEqual(program.wait(PATIENCE), 0)
        self.assertCountEqual(self.saved(), folders)

    def test_the_file_is_the_users_own_and_keeps_what_was_written_by_hand(self):
        self.configuration.mkdir(parents=True)
        self.defaults.write_text('{"note": ["by hand", 1.5], "showSuccessNotifications": false}')
        self.command("--add", self.makeFolder("a"))
        self.assertEqual(self.defaults.stat().st_mode & 0o7777, 0o600)
        content = json.loads(self.defaults.read_text())
        self.assertEqual(list(content), ["note", "showSuccessNotifications", KEY])
        self.assertEqual(content["note"], ["by hand", 1.5])

    def test_a_list_that_was_spoiled_by_hand_is_not_overwritten(self):
        a, b = self.makeFolder("a"), self.makeFolder("b")
        self.command("--add", a)
        content = json.loads(self.defaults.read_text())
        content[KEY].append(b)
        self.defaults.write_text(json.dumps(content))
        _, complaints = self.command("--add", b, status=2)
        self.assertIn(KEY, complaints[0])
        self.assertEqual(json.loads(self.defaults.read_text()), content)

    def test_a_damaged_file_is_set_aside(self):
        a = self.makeFolder("a")
        self.configuration.mkdir(parents=True)
        self.defaults.write_text('{"half": ')
        _, complaints = self.command("--add", a)
        self.assertIn("defaults.json.damaged-", complaints[0])
        (aside,) = self.configuration.glob("defaults.json.damaged-*")
        self.assertEqual(aside.read_text(), '{"half": ')
        self.assertEqual(self.saved(), [a])

    def test_a_list_that_cannot_be_stored_is_an_error(self):
        self.configuration.parent.write_text("a file in the place of the folder")
        _, complaints = self.command("--add", self.makeFolder("a"), status=2)
        self.assertIn("defaults.json", complaints[0])
        _, complaints = self.command(status=2)
        self.assertIn("defaults.json", complaints[0])


class Watching(SavedFoldersTestCase):
    def test_the_saved_folders_are_watched_at_every_start(self):
        a, b = self.makeFolder("a"), self.makeFolder("b")
        self.command("--add", a, b)
        for number in (1, 2):
            self.startOnSaved(a, b)
            self.convert(a, f"photo{number}")
            self.convert(b, f"image{number}")
            self.stop()
        self.assertEqual(self.saved(), [a, b])

    def test_a_folder_that_is_gone_hinders_no_other(self):
        a, gone = self.makeFolder("a"), self.makeFolder("gone")
        self.command("--add", gone, a)
        os.rmdir(gone)
        self.startOnSaved(a)
        self.convert(a)
        self.assertEqual(self.watch.lines.count(f"watching {gone}"), 0)
        self.assertEqual(self.saved(), [gone, a])

    def test_the_running_program_follows_the_list(self):
        a, b = self.makeFolder("a"), self.makeFolder("b")
        self.startOnSaved()
        self.command("--add", a)
        self.watch.waitForLine(f"watching {a}")
        self.convert(a)
        self.command("--add", b)
        self.watch.waitForLine(f"watching {b}")
        both = self.watch.watchedDirectories()
        self.command("--remove", a)
        waitUntil(lambda: self.watch.watchedDirectories() == both - 1, "the end of a watch")
        self.put(smallPicture(self.base), "a/left.png")
        self.rename("a/left.png", "a/left.jpg")
        self.convert(b, "other")
        self.command("--add", a)
        self.watch.waitForLine(f"watching {a}", count=2)
        self.convert(a, "again")
        self.assertPrinted(
            success("photo.png", "photo.jpg"),
            success("other.png", "other.jpg"),
            success("again.png", "again.jpg"),
        )

    def test_nothing_is_left_of_folders_that_are_removed(self):
        folders = [self.makeFolder(f"folder {number}") for number in range(40)]
        self.startOnSaved()
        self.command("--add", folders[0])
        self.watch.waitForLine(f"watching {folders[0]}")
        before = self.resources()
        for _ in range(3):
            self.command("--add", *folders[1:])
            waitUntil(lambda: self.resources()[0] == before[0] + 39, "watches of all folders")
            self.command("--remove", *folders[1:])
            waitUntil(lambda: self.resources() == before, f"the resources to be {before} again")

    def resources(self):
        """The watches, descriptors and threads of the program."""
        process = pathlib.Path(f"/proc/{self.watch.process.pid}")
        count = lambda name: len(list((process / name).iterdir()))
        return self.watch.watchedDirectories(), count("fd"), count("task")

    def test_only_one_program_watches_the_saved_folders(self):
        a = self.makeFolder("a")
        self.command("--add", a)
        self.startOnSaved(a)
        _, complaints = self.command(status=2)
        self.assertIn("running already", complaints[0])
        self.watch.interrupt(9)
        self.watch.waitForEnd()
        self.startOnSaved(a)  # the lock has ended with its holder

    def test_folders_that_are_named_are_not_saved(self):
        a, b = self.makeFolder("a"), self.makeFolder("b")
        self.command("--add", a)
        self.start(b)
        self.convert(b)
        self.stop()
        self.assertEqual(self.saved(), [a])

    def test_successes_are_kept_quiet_if_the_user_wants_it_from_one_moment_to_the_next(self):
        a = self.makeFolder("a")
        self.command("--add", a)
        self.startOnSaved(a)
        self.convert(a)
        content = json.loads(self.defaults.read_text())
        replacement = self.defaults.with_name("by hand")
        replacement.write_text(json.dumps(content | {"showSuccessNotifications": False}))
        replacement.rename(self.defaults)
        self.put(smallPicture(self.base), "a/quiet.png")
        self.rename("a/quiet.png", "a/quiet.jpg")
        self.waitForKind("a/quiet.jpg", b"\xff\xd8")
        self.put(b"no picture", "a/bad.png")
        self.rename("a/bad.png", "a/bad.jpg", reverted="a/bad.png")
        self.assertPrinted(
            success("photo.png", "photo.jpg"), *failure(UNREADABLE, "bad.jpg", "png")
        )

    def waitForKind(self, name, signature):
        waitUntil(lambda: self.read(name).startswith(signature), f"{name} to be converted")


class Disk(SavedFoldersTestCase):
    """A folder on a disk that comes and goes. The program gets mounts of its own."""

    # Only root may mount: whoever is not becomes it in a user namespace.
    namespaces = ("unshare", "--mount", "--map-root-user")

    def setUp(self):
        super().setUp()
        if subprocess.run([*self.namespaces, "true"], stderr=subprocess.DEVNULL).returncode != 0:
            self.skipTest("mounts of one's own are not permitted")
        self.place = self.makeFolder("disk")
        self.disk = self.base / "disk"
        (self.disk / "photos").mkdir(parents=True)

    def startWithoutDisk(self):
        self.watch = Watch([], self.environment, launcher=[*self.namespaces, harness.program])
        self.addCleanup(self.watch.process.kill)
        waitUntil(lambda: self.watch.watchedDirectories() > 0, "the list to be watched")

    def mount(self):
        self.inMounts("mount", "--bind", self.disk, self.place)

    def unmount(self):
        self.inMounts("umount", self.place)

    def inMounts(self, *command):
        """Runs a command that sees and changes the mounts of the program."""
        target = f"--target={self.watch.process.pid}"
        output("nsenter", target, "--user", "--mount", "--preserve-credentials", *command)

    def convertOnDisk(self, name):
        photo = self.disk / "photos" / name
        shutil.copyfile(smallPicture(self.base), f"{photo}.png")
        os.rename(f"{photo}.png", f"{photo}.jpg")
        self.watch.waitForLine(success(f"{name}.png", f"{name}.jpg"))

    def test_a_saved_folder_is_watched_once_its_disk_is_there(self):
        saved = self.makeFolder("disk/photos")
        self.command("--add", saved)
        os.rmdir(saved)
        self.startWithoutDisk()
        self.mount()
        self.watch.waitForLine(f"watching {saved}")
        self.convertOnDisk("photo")

    def test_a_watched_folder_is_watched_again_when_its_disk_is_back(self):
        self.command("--add", self.place)
        self.startWithoutDisk()
        self.watch.waitForLine(f"watching {self.place}")
        without = self.watch.watchedDirectories()
        for number in (1, 2):
            self.mount()
            waitUntil(lambda: self.watch.watchedDirectories() == without + 1, "the disk's folder")
            self.convertOnDisk(f"photo{number}")
            self.unmount()
            waitUntil(lambda: self.watch.watchedDirectories() == without, "the end of its watch")


class Overlapping(SavedFoldersTestCase):
    def test_a_file_in_several_watched_folders_is_converted_once(self):
        inner = self.makeFolder("outer/inner")
        outer = str(self.folder / "outer")
        link = self.base / "link"
        link.symlink_to(outer)
        for order in ((outer, inner, link), (inner, link, outer)):
            self.start(*order)
            expected = []
            for number, place in enumerate(("outer", "outer/inner") * 5):
                name = f"{place}/{order.index(outer)}-{number}"
                self.put(smallPicture(self.base), f"{name}.png")
                self.rename(f"{name}.png", f"{name}.jpg")
                base = os.path.basename(name)
                expected.append(success(f"{base}.png", f"{base}.jpg"))
            self.assertPrinted(*expected)
            self.stop()
            self.assertCountEqual(self.watch.notifications(), expected)

    def test_a_file_that_cannot_be_converted_is_renamed_back_once(self):
        inner = self.makeFolder("outer/inner")
        outer = str(self.folder / "outer")
        self.put(b"no picture", "outer/inner/bad.png")
        self.put(b"no picture", "outer/moved.png")
        self.start(inner, outer)
        self.rename("outer/inner/bad.png", "outer/inner/bad.jpg", reverted="outer/inner/bad.png")
        # Only the outer folder sees both names of this one.
        self.rename("outer/moved.png", "outer/inner/moved.jpg", reverted="outer/inner/moved.png")
        self.assertPrinted(
            *failure(UNREADABLE, "bad.jpg", "png"), *failure(UNREADABLE, "moved.jpg", "png")
        )


class Unit(WatchTestCase):
    def test_the_service_file_is_in_order(self):
        analyze = shutil.which("systemd-analyze")
        if analyze is None:
            self.skipTest("systemd-analyze is not installed")
        template = pathlib.Path(__file__).parents[2] / "packaging/systemd/kestrivane-watch.service.in"
        copy = self.base / template.stem
        command = "@CMAKE_INSTALL_FULL_BINDIR@/kestrivane-watch"
        copy.write_text(template.read_text().replace(command, str(harness.program)))
        done = subprocess.run(
            [analyze, "verify", "--user", "--man=no", copy],
            env=self.environment | {"XDG_RUNTIME_DIR": str(self.base / "runtime")},
            capture_output=True,
            text=True,
            timeout=PATIENCE,
        )
        self.assertEqual((done.returncode, done.stderr), (0, ""))

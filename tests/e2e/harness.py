"""Starts the built program on real folders and checks what becomes of the files in them.

Every test has a base folder of its own with a watched folder and a temporary folder, and keeps count
of the files that ought to be there: `put` and `rename` say what is expected, and when the test is
over nothing else may be left, neither in the watched folder nor in the temporary one.
"""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import threading
import unittest

from pictures import FORMATS
from waiting import PATIENCE, output, waitUntil

# Set by run_tests.py.
program = None

# The two reasons of the image converter for a source that is no picture, or a damaged one.
UNREADABLE = "Conversion error: Failed to read source image."
UNDECODABLE = "Conversion error: Failed to extract image data."


class Watch:
    """A running program and the lines that it has printed so far."""

    def __init__(self, arguments, environment, launcher=(), prepare=None):
        self.process = subprocess.Popen(
            [*(launcher or [program]), *arguments],
            env=environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            preexec_fn=prepare,
        )
        self.lines = []
        self.log = b""
        self.changed_ = threading.Condition()
        self.readers_ = [
            threading.Thread(target=self.readLines_, daemon=True),
            threading.Thread(target=self.readLog_, daemon=True),
        ]
        for reader in self.readers_:
            reader.start()

    def waitForLine(self, line, count=1):
        self.waitFor(lambda: self.lines.count(line) >= count, f"{count} times {line!r}")

    def waitForLines(self, count):
        """Waits for `count` notifications, whatever they say."""
        self.waitFor(lambda: len(self.notifications()) >= count, f"{count} notifications")

    def waitFor(self, condition, description):
        with self.changed_:
            met = self.changed_.wait_for(
                lambda: condition() or self.process.poll() is not None, PATIENCE
            )
            if not (met and condition()):
                raise AssertionError(
                    f"waited in vain for {description}; exit status {self.process.poll()}; "
                    f"printed: {self.lines}; log: {self.log.decode(errors='replace')}"
                )

    def notifications(self):
        return [line for line in self.lines if not line.startswith("watching ")]

    def watchedDirectories(self):
        """How many directories the kernel watches for the program."""
        count = 0
        for entry in pathlib.Path(f"/proc/{self.process.pid}/fdinfo").iterdir():
            try:
                count += entry.read_text().count("inotify wd:")
            except FileNotFoundError:
                pass  # closed since the listing
        return count

    def interrupt(self, number=signal.SIGTERM):
        self.process.send_signal(number)

    def waitForEnd(self):
        """The exit status, once everything that was printed has been read too."""
        status = self.process.wait(PATIENCE)
        for reader in self.readers_:
            reader.join(PATIENCE)
        return status

    def readLines_(self):
        for line in self.process.stdout:
            with self.changed_:
                # Not "replace": whatever the names of the files are, the output is valid UTF-8.
                self.lines.append(line.decode("utf-8").removesuffix("\n"))
                self.changed_.notify_all()
        with self.changed_:
            self.changed_.notify_all()

    def readLog_(self):
        for line in self.process.stderr:
            self.log += line


class WatchTestCase(unittest.TestCase):
    longMessage = True

    def setUp(self):
        self.base = pathlib.Path(tempfile.mkdtemp(prefix="kestrivane-e2e-")).resolve()
        self.addCleanup(shutil.rmtree, self.base, ignore_errors=True)
        self.folder = self.base / "watched"
        self.temporary = self.base / "temporary"
        runtime = self.base / "runtime"
        for each in (self.folder, self.temporary, runtime):
            each.mkdir(mode=0o700)
        # A clean environment: no desktop of whoever runs the tests, and English texts.
        self.environment = {
            "PATH": os.environ["PATH"],
            "HOME": str(self.base),
            "LANG": "C.UTF-8",
            "TMPDIR": str(self.temporary),
            "XDG_RUNTIME_DIR": str(runtime),
        }
        self.expected = set()
        self.watch = None
        self.printed = None

    def tearDown(self):
        if self.watch is not None and self.watch.process.poll() is None:
            self.stop()
        if self.printed is not None:
            self.assertCountEqual(self.watch.notifications(), self.printed, "nothing came later")
        self.assertEqual(self.filesIn(self.folder), self.expected, "files in the watched folder")
        self.assertEqual(self.filesIn(self.temporary), set(), "files in the temporary folder")

    def start(self, *folders, **options):
        """Starts the program on `folders` (by default the watched folder) and waits until it watches."""
        folders = folders or (self.folder,)
        self.watch = Watch(folders, self.environment, **options)
        self.addCleanup(self.watch.process.kill)
        for folder in folders:
            self.watch.waitForLine(f"watching {folder}")
        return self.watch

    def stop(self, number=signal.SIGTERM):
        self.watch.interrupt(number)
        self.assertEqual(self.watch.waitForEnd(), 0, "exit status after a signal")

    def put(self, content, name):
        """Puts a copy of the file `content`, or these bytes, into the watched folder."""
        path = self.path(name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if isinstance(content, bytes):
            with open(path, "wb") as file:
                file.write(content)
        else:
            shutil.copyfile(content, path)
        self.expected.add(os.fsencode(name))
        return path

    def rename(self, old, new, reverted=None):
        """Renames a file; `reverted` is the name that it is expected to get back, if any."""
        os.rename(self.path(old), self.path(new))
        self.expected.remove(os.fsencode(old))
        self.expected.add(os.fsencode(new if reverted is None else reverted))

    def path(self, name):
        return os.path.join(os.fsencode(self.folder), os.fsencode(name))

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def filesIn(self, folder):
        """The files below `folder`, as relative paths."""
        found = set()
        root = os.fsencode(folder)
        for here, _, files in os.walk(root):
            for name in files:
                found.add(os.path.relpath(os.path.join(here, name), root))
        return found

    def waitForTemporaryFile(self):
        """Waits until a conversion has begun to write its result."""
        waitUntil(lambda: self.filesIn(self.temporary), "a file in the temporary folder")

    def assertPicture(self, name, extension, size):
        """Two independent programs agree that the file is a picture of this kind and size."""
        kind, mime = FORMATS[extension]
        # A large icon is a PNG picture inside, and that is what `identify` names.
        described = ["PNG" if kind == "ICO" and size[0] == 256 else kind, *map(str, size)]
        # From standard input, so that no program makes anything of the file's name; the signature is
        # asked for because it takes all pixels to make it.
        whole = ("identify", "-regard-warnings", "-format", "%m %w %h %#\n", f"{kind}:-")
        with open(self.path(name), "rb") as file:
            found = output(*whole, stdin=file).split()[:3]
        found[0] = found[0].rstrip("0123456789")  # "BMP3"
        self.assertEqual(found, described, name)
        # All that `file` takes it for, because an icon with a large picture inside may pass for a
        # Targa image first.
        with open(self.path(name), "rb") as file:
            types = output(
                "file", "--brief", "--keep-going", "--raw", "--mime-type", "-", stdin=file
            )
        self.assertIn(mime, re.split(r"\s-\s|\s", types), name)

    def assertLooksLike(self, name, extension, original, *preparation):
        """The picture is the same as `original` to the eye, after this preparation by `convert`."""
        reference, result = self.base / "reference.png", self.base / "result.png"
        # ImageMagick keeps HEIC as YCbCr unless told otherwise.
        colour = ("-colorspace", "sRGB")
        output("convert", f"{original}[0]", *preparation, *colour, reference)
        with open(self.path(name), "rb") as file:
            output("convert", f"{FORMATS[extension][0]}:-", *colour, result, stdin=file)
        compared = subprocess.run(
            ["compare", "-metric", "RMSE", reference, result, "null:"],
            capture_output=True,
            text=True,
            timeout=PATIENCE,
        )
        # The metric is printed as "value (value relative to the largest possible)".
        difference = re.fullmatch(r"\S+ \((\S+)\)", compared.stderr.strip())
        self.assertIsNotNone(difference, compared.stderr)
        self.assertLess(float(difference[1]), 0.05, name)

    def takeKeptCopy(self, extension, size):
        """After a failed replacement: the finished picture is still in the temporary folder."""
        (name,) = self.filesIn(self.temporary)
        kept = os.path.join(os.fsencode(self.temporary), name)
        shutil.move(kept, self.path("kept copy"))
        self.assertPicture("kept copy", extension, size)
        os.remove(self.path("kept copy"))

    def assertPrinted(self, *lines):
        """These notifications, and no others until the program ends, are printed, in any order."""
        self.printed = lines
        self.watch.waitForLines(len(lines))
        self.assertCountEqual(self.watch.notifications(), lines)


def success(old, new):
    return f"File converted: Success: {old} -> {new}"


def failure(reason, new, extension):
    """The two notifications of a failed conversion that was undone."""
    return (
        f"Conversion error: {reason}",
        f"Conversion error: Conversion failed. File '{new}' reverted to original extension "
        f"'{extension}'.",
    )


def criticalFailure(new):
    """The notification that a failed conversion could not be undone."""
    return (
        f"Critical error: Could not revert file '{new}' to its original extension. "
        "Please check it manually."
    )

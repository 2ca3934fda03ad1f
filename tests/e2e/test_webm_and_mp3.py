"""Conversions by the ffmpeg tool: WebM in both directions, and MP3 from videos."""

import contextlib
import json
import os
import pathlib
import shutil
import signal
import subprocess
import unittest

import harness
from harness import WatchTestCase, failure, success
from pictures import SAMPLES, SMALL, smallPicture
from waiting import output, waitUntil

CLIPS = SAMPLES / "media"
FAILED = "Conversion error: Conversion error: Error processing WebM."
MISSING = "Conversion error: Internal conversion component is missing."

# Writes the identifier of its process into "started", waits for a line in a pipe of its own, and copies.
WAITING_TOOL = """#!/bin/sh
cd "$(dirname "$0")"
mkfifo go-$$
echo $$ >> started
read line < go-$$
exec cp "$3" "$4"
"""


def streamsOf(path):
    """What ffprobe finds: the duration in seconds, and the streams by their kind."""
    entries = "format=duration:stream=codec_type,codec_name,sample_rate,channels,width,height"
    found = json.loads(output("ffprobe", "-v", "error", "-show_entries", entries, "-of", "json", path))
    streams = {stream["codec_type"]: stream for stream in found["streams"]}
    return float(found["format"].get("duration", 0)), streams


def isRunning(process):
    try:
        state = pathlib.Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0]
    except (FileNotFoundError, ProcessLookupError):
        return False
    return state != "Z"  # an orphan that nobody waits for


class ToolTestCase(WatchTestCase):
    def install(self, tool):
        """Puts a copy of the program beside `tool`: the text of a script, a file, or nothing."""
        prefix = self.base / "installed"
        (prefix / "bin").mkdir(parents=True)
        self.auxiliary = prefix / "libexec/kestrivane"
        self.auxiliary.mkdir(parents=True)
        self.installed = prefix / "bin/kestrivane-watch"
        shutil.copy(harness.program, self.installed)
        module = "libexec/kestrivane/kestrivane-media.so"
        (prefix / module).symlink_to(harness.program.parent.parent / module)
        if isinstance(tool, pathlib.Path):
            (self.auxiliary / "ffmpeg").symlink_to(tool)
        elif tool is not None:
            (self.auxiliary / "ffmpeg").write_text(tool)
            (self.auxiliary / "ffmpeg").chmod(0o755)

    def installWaitingTool(self):
        self.install(WAITING_TOOL)
        self.toolsGone = 0

    def startInstalled(self, *folders, **options):
        return self.start(*folders, launcher=(self.installed,), **options)

    def startedTools(self):
        with contextlib.suppress(FileNotFoundError):
            return [int(line) for line in (self.auxiliary / "started").read_text().split()]
        return []

    def waitForTools(self, count):
        waitUntil(lambda: len(self.startedTools()) == count, f"{count} running tools")
        return self.startedTools()

    def letToolsGo(self, count):
        for tool in self.startedTools()[self.toolsGone :][:count]:
            (self.auxiliary / f"go-{tool}").write_text("go\n")
        self.toolsGone += count

    def forgetTemporaryFiles(self):
        """What a failing tool has begun to write stays; returns how many files that were."""
        files = self.filesIn(self.temporary)
        for name in files:
            os.remove(os.path.join(os.fsencode(self.temporary), name))
        return len(files)


class Conversions(ToolTestCase):
    def convert(self, content, old, new):
        """Converts and returns what ffprobe finds before and after."""
        before = streamsOf(self.put(content, old))
        self.start()
        self.rename(old, new)
        self.assertPrinted(success(old, new))
        after = streamsOf(self.path(new))
        # The frames of some codecs of sound are longer than those of films.
        self.assertAlmostEqual(after[0], before[0], delta=0.1, msg="seconds")
        return before[1], after[1]

    def assertCodecs(self, streams, **codecs):
        self.assertEqual({kind: streams[kind]["codec_name"] for kind in streams}, codecs)

    def test_mp4_to_webm(self):
        before, after = self.convert(CLIPS / "mpeg4.mp4", "a clip.mp4", "a clip.webm")
        self.assertCodecs(after, video="vp9", audio="opus")
        for side in ("width", "height"):
            self.assertEqual(after["video"][side], before["video"][side])

    def test_mov_to_webm(self):
        before, after = self.convert(CLIPS / "telephone-h264.mov", "a clip.mov", "a clip.webm")
        self.assertCodecs(after, video="vp9", audio="opus")
        # The telephone was held upright: the film is turned before it is encoded.
        self.assertEqual(
            (after["video"]["width"], after["video"]["height"]),
            (before["video"]["height"], before["video"]["width"]),
        )

    def test_webm_to_mp4(self):
        _, after = self.convert(CLIPS / "vp9.webm", "clip.webm", "clip.mp4")
        self.assertCodecs(after, video="h264", audio="aac")

    def test_mov_to_mp3(self):
        _, after = self.convert(CLIPS / "telephone-h264.mov", "talk.mov", "talk.mp3")
        self.assertCodecs(after, audio="mp3")
        self.assertEqual(after["audio"]["sample_rate"], "44100")
        self.assertEqual(after["audio"]["channels"], 2)

    def test_webm_to_mp3_in_capitals(self):
        _, after = self.convert(CLIPS / "vp9.webm", "Интервью.WEBM", "Интервью.MP3")
        self.assertCodecs(after, audio="mp3")

    def test_webm_to_gif(self):
        _, after = self.convert(CLIPS / "vp9.webm", "clip.webm", "clip.gif")
        self.assertCodecs(after, video="gif")

    def test_sound_to_webm(self):
        sound = self.base / "sound.wav"
        output("ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=duration=0.5", sound)
        _, after = self.convert(sound, "sound.wav", "sound.webm")
        self.assertCodecs(after, audio="opus")


class BadInput(ToolTestCase):
    def assertRenamedBack(self, content, new, *lines, **options):
        self.put(content, "clip.webm")
        before = self.read("clip.webm")
        self.start(**options)
        self.rename("clip.webm", new, reverted="clip.webm")
        self.assertPrinted(*lines)
        self.assertEqual(self.read("clip.webm"), before)

    def test_a_text_file(self):
        self.assertRenamedBack(b"Dear diary.\n", "clip.mp4", *failure(FAILED, "clip.mp4", "webm"))

    def test_a_text_file_in_russian(self):
        self.environment["LANG"] = "ru_RU.UTF-8"
        self.assertRenamedBack(
            b"Dear diary.\n",
            "clip.mp3",
            "Ошибка конвертации: Ошибка конвертации: Ошибка конвертации: "
            "Ошибка при обработке WebM.",
            "Ошибка конвертации: Конвертация не удалась. Файл 'clip.mp3' возвращен к исходному "
            "расширению 'webm'.",
        )

    def test_an_empty_file(self):
        self.assertRenamedBack(b"", "clip.mov", *failure(FAILED, "clip.mov", "webm"))

    def test_a_target_that_is_no_medium(self):
        self.assertRenamedBack(CLIPS / "vp9.webm", "clip.txt", *failure(FAILED, "clip.txt", "webm"))

    def test_several_frames_for_one_picture(self):
        content = CLIPS / "vp9.webm"
        self.assertRenamedBack(content, "clip.png", *failure(FAILED, "clip.png", "webm"))
        self.assertEqual(self.forgetTemporaryFiles(), 1)

    def test_a_disk_that_fills_up(self):
        # Whatever the tool says: at its end it overlooks what does not fit.
        mounted = subprocess.run(
            ["mount", "-t", "tmpfs", "-o", "size=8k,mode=700", "kestrivane-test", self.temporary],
            capture_output=True,
        )
        if mounted.returncode != 0:
            self.skipTest(f"no file system may be mounted here: {mounted.stderr.decode().strip()}")
        self.addCleanup(output, "umount", "--lazy", self.temporary)
        content = CLIPS / "vp9.webm"
        self.assertRenamedBack(content, "clip.mp4", *failure(FAILED, "clip.mp4", "webm"))
        self.assertEqual(self.forgetTemporaryFiles(), 1)


class BadTool(ToolTestCase):
    def assertFails(self, tool, *lines, content=CLIPS / "vp9.webm"):
        self.install(tool)
        self.put(content, "clip.webm")
        self.startInstalled()
        self.rename("clip.webm", "clip.mp4", reverted="clip.webm")
        self.assertPrinted(*lines)
        self.assertEqual(self.read("clip.webm"), content.read_bytes())

    def test_a_missing_tool(self):
        self.assertFails(None, *failure(MISSING, "clip.mp4", "webm"))

    def test_a_link_to_a_missing_tool(self):
        self.assertFails(self.base / "nothing", *failure(MISSING, "clip.mp4", "webm"))

    def test_a_missing_tool_in_russian(self):
        self.environment["LANG"] = "ru_RU.UTF-8"
        self.assertFails(
            None,
            "Ошибка конвертации: Ошибка конвертации: "
            "Внутренний компонент конвертации отсутствует.",
            "Ошибка конвертации: Конвертация не удалась. Файл 'clip.mp4' возвращен к исходному "
            "расширению 'webm'.",
        )

    def test_a_tool_that_is_not_executable(self):
        reason = "Conversion error: Permission denied"
        self.assertFails(CLIPS / "vp9.webm", *failure(reason, "clip.mp4", "webm"))

    def test_a_tool_without_its_interpreter(self):
        reason = "Conversion error: No such file or directory"
        self.assertFails("#!/no/such/shell\n", *failure(reason, "clip.mp4", "webm"))

    def test_a_tool_that_fails(self):
        self.assertFails("#!/bin/sh\nexit 1\n", *failure(FAILED, "clip.mp4", "webm"))

    def test_a_tool_that_is_killed(self):
        self.assertFails("#!/bin/sh\nkill -KILL $$\n", *failure(FAILED, "clip.mp4", "webm"))

    def test_a_tool_that_says_ten_megabytes_is_not_held_up(self):
        self.install(
            "#!/bin/sh\n"
            "i=0\n"
            "while [ $i -lt 2560 ]; do printf %4096d $i >&2; i=$((i+1)); done\n"
            'cp "$3" "$4"\n'
        )
        self.put(b"as it is", "clip.webm")
        self.startInstalled()
        self.rename("clip.webm", "clip.mp4")
        self.assertPrinted(success("clip.webm", "clip.mp4"))
        self.assertEqual(self.read("clip.mp4"), b"as it is")

    def test_a_tool_that_loses_the_end_and_says_nothing(self):
        # As it does when its source cannot be read any further, or the disk is full for a while.
        film = self.base / "film.webm"
        picture = ["-f", "lavfi", "-i", "testsrc=s=64x64:r=10:d=4"]
        output("ffmpeg", "-v", "error", *picture, "-deadline", "realtime", film)
        self.assertFails(
            '#!/bin/sh\nexec ffmpeg -v quiet -y -i "$3" -t 2 "$4"\n',
            *failure(FAILED, "clip.mp4", "webm"),
            content=film,
        )
        self.assertEqual(self.forgetTemporaryFiles(), 1)

    def test_a_tool_that_leaves_no_film_and_says_nothing(self):
        tool = '#!/bin/sh\necho "no film" > "$4"\n'
        self.assertFails(tool, *failure(FAILED, "clip.mp4", "webm"))
        self.assertEqual(self.forgetTemporaryFiles(), 1)

    def test_a_tool_finds_nothing_to_read_on_standard_input(self):
        self.install('#!/bin/sh\nreadlink /proc/self/fd/0 > "$4"\n')
        self.put(b"clip", "clip.webm")
        self.startInstalled()
        self.rename("clip.webm", "clip.mp4")
        self.assertPrinted(success("clip.webm", "clip.mp4"))
        self.assertEqual(self.read("clip.mp4"), b"/dev/null\n")


class LongConversions(ToolTestCase):
    def startLongConversion(self):
        """Begins one as from a terminal, where Ctrl-C goes to the whole group of processes."""
        self.installWaitingTool()
        self.put(b"a long film", "film.mp4")
        self.startInstalled(prepare=os.setsid)
        self.rename("film.mp4", "film.webm")
        (tool,) = self.waitForTools(1)
        return tool

    def interruptGroup(self):
        os.killpg(self.watch.process.pid, signal.SIGINT)

    def assertToolEnds(self, tool):
        waitUntil(lambda: not isRunning(tool), "the end of the tool")
        self.assertEqual(self.read("film.webm"), b"a long film")

    def test_the_first_interrupt_lets_the_tool_finish(self):
        self.startLongConversion()
        self.interruptGroup()
        self.letToolsGo(1)
        self.assertEqual(self.watch.waitForEnd(), 0)
        self.assertEqual(self.watch.notifications(), [success("film.mp4", "film.webm")])
        self.assertEqual(self.read("film.webm"), b"a long film")

    def test_the_second_interrupt_ends_the_tool_too(self):
        tool = self.startLongConversion()
        self.interruptGroup()
        # Only a signal that has been taken is followed by another one.
        pending = pathlib.Path(f"/proc/{self.watch.process.pid}/status")
        waitUntil(lambda: "ShdPnd:\t0000000000000000" in pending.read_text(), "the first interrupt")
        self.interruptGroup()
        self.assertEqual(self.watch.waitForEnd(), 128 + signal.SIGINT)
        self.assertToolEnds(tool)

    def test_a_program_that_is_killed_takes_the_tool_along(self):
        tool = self.startLongConversion()
        self.watch.interrupt(signal.SIGKILL)
        self.assertEqual(self.watch.waitForEnd(), -signal.SIGKILL)
        self.assertToolEnds(tool)

    def test_pictures_are_converted_while_tools_run_in_other_folders(self):
        self.installWaitingTool()
        folders = [self.folder / name for name in ("first", "second", "pictures")]
        for folder in folders:
            folder.mkdir()
        films = [f"{folder}/{number}" for folder in ("first", "second") for number in (1, 2)]
        for film in films:
            self.put(b"a long film", f"{film}.mp4")
        self.put(smallPicture(self.base), "pictures/photo.png")
        self.startInstalled(*folders)
        for film in films:
            self.rename(f"{film}.mp4", f"{film}.webm")
        self.waitForTools(4)
        self.rename("pictures/photo.png", "pictures/photo.jpg")
        self.watch.waitForLine(success("photo.png", "photo.jpg"))
        self.assertPicture("pictures/photo.jpg", "jpg", SMALL)
        self.letToolsGo(4)
        self.watch.waitForLines(5)

    def test_a_tool_waits_for_its_turn_and_nothing_else_does(self):
        self.installWaitingTool()
        full = ["first", "second", "third", "fourth", "fifth"]
        folders = [self.folder / name for name in (*full, "others")]
        for folder in folders:
            folder.mkdir()
        films = [f"{folder}/{number}" for folder in full for number in (1, 2)]
        for film in films:
            self.put(b"a long film", f"{film}.mp4")
        self.put(smallPicture(self.base), "others/photo.png")
        self.put(CLIPS / "silent.mp4", "others/copied.mp4")
        self.startInstalled(*folders)
        for film in films:
            self.rename(f"{film}.mp4", f"{film}.webm")
        self.waitForTools(8)
        self.rename("others/photo.png", "others/photo.jpg")
        self.watch.waitForLine(success("photo.png", "photo.jpg"))
        self.rename("others/copied.mp4", "others/copied.mov")
        self.watch.waitForLine(success("copied.mp4", "copied.mov"))
        self.assertEqual(len(self.startedTools()), 8)
        self.letToolsGo(1)
        self.waitForTools(9)
        self.letToolsGo(1)
        self.waitForTools(10)
        self.letToolsGo(8)
        self.watch.waitForLines(12)


class Installation(ToolTestCase):
    @unittest.skipUnless("KESTRIVANE_BUILD" in os.environ, "run by ctest, which knows the build")
    def test_the_installed_program_converts(self):
        prefix = self.base / "installed"
        output("cmake", "--install", os.environ["KESTRIVANE_BUILD"], "--prefix", prefix)
        installed = {str(path.relative_to(prefix)) for path in prefix.rglob("*")}
        for name in ("README.md", "LICENSE", "docs/pictures.md"):
            self.assertIn(f"share/doc/kestrivane/{name}", installed)
        self.assertTrue((prefix / "libexec/kestrivane/ffmpeg").is_symlink())
        self.put(CLIPS / "vp9.webm", "clip.webm")
        self.start(launcher=(prefix / "bin/kestrivane-watch",))
        self.rename("clip.webm", "clip.mp3")
        self.assertPrinted(success("clip.webm", "clip.mp3"))
        self.assertEqual(list(streamsOf(self.path("clip.mp3"))[1]), ["audio"])
        self.put(CLIPS / "silent.mp4", "film.mp4")
        self.rename("film.mp4", "film.mov")
        self.assertPrinted(success("clip.webm", "clip.mp3"), success("film.mp4", "film.mov"))

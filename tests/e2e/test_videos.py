"""Videos renamed from one container to another, as ffprobe and ffmpeg find them."""

import json
import pathlib
import resource
import shutil
import subprocess

import harness
from harness import WatchTestCase, failure, success
from pictures import SAMPLES, smallPicture
from waiting import output, waitUntil

FILMS = SAMPLES / "media"
FRAME = 0.034  # seconds


def probe(path):
    """What ffprobe finds in the file: its tracks without the descriptive ones, and the format."""
    with open(path, "rb") as file:
        found = json.loads(
            output("ffprobe", "-v", "error", "-show_streams", "-show_format", "-of", "json", "-",
                   stdin=file)
        )
    kinds = ("video", "audio", "subtitle")
    found["streams"] = [track for track in found["streams"] if track["codec_type"] in kinds]
    return found


def codecs(found):
    return [track["codec_name"] for track in found["streams"]]


def frameHashes(path):
    """A hash of each decoded frame of picture and sound, in the order of the tracks."""
    lines = output("ffmpeg", "-v", "error", "-i", path, "-map", "0:v?", "-map", "0:a?",
                   "-f", "framemd5", "-").splitlines()
    rows = [line.split(",") for line in lines if not line.startswith("#")]
    return sorted((row[0], row[-1].strip()) for row in rows)


class VideoTestCase(WatchTestCase):
    def convert(self, film, old, new):
        """Renames the film from clip.old to clip.new; hands out what ffprobe finds before and after."""
        path = self.put(FILMS / film, f"clip.{old}")
        before = probe(path)
        self.start()
        self.rename(f"clip.{old}", f"clip.{new}")
        self.assertPrinted(success(f"clip.{old}", f"clip.{new}"))
        after = probe(self.path(f"clip.{new}"))
        self.assertAlmostEqual(
            float(after["format"]["duration"]), float(before["format"]["duration"]), delta=FRAME
        )
        return before, after

    def assertCopied(self, film, old, new):
        before, after = self.convert(film, old, new)
        self.assertEqual(codecs(after), codecs(before))
        self.assertEqual(frameHashes(self.path(f"clip.{new}")), frameHashes(FILMS / film))
        return before, after


class Loading(VideoTestCase):
    def maps(self):
        return pathlib.Path(f"/proc/{self.watch.process.pid}/maps").read_text()

    def test_the_media_libraries_are_loaded_with_the_first_film(self):
        self.put(FILMS / "silent.mp4", "clip.mp4")
        self.put(smallPicture(self.base), "photo.png")
        self.start()
        self.rename("photo.png", "photo.jpg")
        self.watch.waitForLine(success("photo.png", "photo.jpg"))
        self.assertNotIn("libavcodec", self.maps())
        self.rename("clip.mp4", "clip.mov")
        self.assertPrinted(success("photo.png", "photo.jpg"), success("clip.mp4", "clip.mov"))
        self.assertIn("libavcodec", self.maps())

    def test_without_its_module_a_film_gets_its_old_name_back(self):
        installed = self.base / "installed"
        module = installed / "libexec/kestrivane/kestrivane-media.so"
        module.parent.mkdir(parents=True)
        (installed / "bin").mkdir()
        for name in ("first.mp4", "second.mp4"):
            self.put(FILMS / "silent.mp4", name)
        self.start(launcher=(shutil.copy(harness.program, installed / "bin"),))
        unusable = "Conversion error: A part of Kestrivane cannot be loaded: "
        self.rename("first.mp4", "first.mov", reverted="first.mp4")
        missing = failure(unusable + module.name, "first.mov", "mp4")
        self.assertPrinted(*missing)
        module.write_text("no module")
        self.rename("second.mp4", "second.mov", reverted="second.mp4")
        broken = failure(f"{unusable}{module}: file too short", "second.mov", "mp4")
        self.assertPrinted(*missing, *broken)


class Copies(VideoTestCase):
    def test_a_telephones_film_to_mp4_stays_turned(self):
        _, after = self.assertCopied("telephone-h264.mov", "mov", "mp4")
        (matrix,) = after["streams"][0]["side_data_list"]
        self.assertEqual(matrix["rotation"], 90)
        self.assertEqual(after["format"]["tags"]["major_brand"], "isom")

    def test_a_telephones_hevc_film_to_mov(self):
        _, after = self.assertCopied("telephone-hevc.mp4", "mp4", "mov")
        self.assertEqual(after["streams"][0]["codec_tag_string"], "hvc1")
        self.assertEqual(after["format"]["tags"]["major_brand"], "qt  ")

    def test_several_sound_tracks_to_m4v(self):
        _, after = self.assertCopied("several.mp4", "mp4", "m4v")
        languages = [track["tags"]["language"] for track in after["streams"]]
        self.assertEqual(languages[1:4], ["rus", "eng", "rus"])
        self.assertEqual(after["format"]["tags"]["major_brand"], "M4V ")

    def test_a_film_without_sound_from_m4v_to_mov(self):
        self.assertCopied("silent.mp4", "m4v", "mov")

    def test_mpeg4_from_mp4_to_mov(self):
        self.assertCopied("mpeg4.mp4", "mp4", "mov")

    def test_a_film_that_was_trimmed(self):
        self.assertCopied("trimmed.mp4", "mp4", "mov")

    def test_a_song_with_its_cover_to_m4v(self):
        _, after = self.convert("song.m4a", "mp4", "m4v")
        self.assertEqual(sorted(codecs(after)), ["aac", "mjpeg"])

    def test_extensions_in_capitals(self):
        self.put(FILMS / "silent.mp4", "CLIP.MOV")
        self.start()
        self.rename("CLIP.MOV", "CLIP.MP4")
        self.assertPrinted(success("CLIP.MOV", "CLIP.MP4"))
        self.assertEqual(probe(self.path("CLIP.MP4"))["format"]["tags"]["major_brand"], "isom")


class Encoded(VideoTestCase):
    def test_prores_and_pcm_to_mp4(self):
        before, after = self.convert("prores.mov", "mov", "mp4")
        self.assertEqual(codecs(before), ["prores", "pcm_s24le"])
        self.assertEqual(codecs(after), ["h264", "aac"])

    def test_a_webm_named_mp4_is_exported_by_its_content(self):
        before, after = self.convert("vp9.webm", "mp4", "mov")
        self.assertEqual(codecs(before), ["vp9", "opus"])
        self.assertEqual(codecs(after), ["h264", "aac"])


def noSession(name):
    return f"Conversion error: Не удалось создать AVAssetExportSession для видео: {name}"


class BadVideos(WatchTestCase):
    def assertRenamedBack(self, content, reason):
        self.put(content, "clip.mp4")
        before = self.read("clip.mp4")
        self.start()
        self.rename("clip.mp4", "clip.mov", reverted="clip.mp4")
        self.assertPrinted(*failure(reason, "clip.mov", "mp4"))
        self.assertEqual(self.read("clip.mp4"), before)

    def test_a_text_file_with_a_videos_name(self):
        self.assertRenamedBack(b"Dear diary, this is no film.\n", noSession("clip.mov"))

    def test_an_empty_file(self):
        self.assertRenamedBack(b"", noSession("clip.mov"))

    def test_a_film_without_its_table_of_contents(self):
        content = (FILMS / "silent.mp4").read_bytes()
        self.assertRenamedBack(content[: len(content) * 2 // 3], noSession("clip.mov"))

    def test_a_film_that_was_cut_off(self):
        whole = self.base / "whole.mp4"
        output("ffmpeg", "-v", "error", "-i", FILMS / "silent.mp4", "-c", "copy",
               "-movflags", "+faststart", whole)
        content = whole.read_bytes()
        reason = "Conversion error: Invalid data found when processing input"
        self.assertRenamedBack(content[: len(content) * 2 // 3], reason)

    def test_the_texts_in_russian(self):
        self.environment["LANG"] = "ru_RU.UTF-8"
        self.put(b"Dear diary", "clip.mp4")
        self.start()
        self.rename("clip.mp4", "clip.mov", reverted="clip.mp4")
        self.assertPrinted(
            "Ошибка конвертации: Ошибка конвертации: Не удалось создать AVAssetExportSession "
            "для видео: clip.mov",
            "Ошибка конвертации: Конвертация не удалась. Файл 'clip.mov' возвращен к исходному "
            "расширению 'mp4'.",
        )

    def test_a_limit_on_the_size_of_files(self):
        self.put(FILMS / "telephone-h264.mov", "clip.mov")
        self.start(prepare=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (9000, 9000)))
        self.rename("clip.mov", "clip.mp4", reverted="clip.mov")
        self.assertPrinted(*failure("Conversion error: File too large", "clip.mp4", "mov"))
        self.assertEqual(self.read("clip.mov"), (FILMS / "telephone-h264.mov").read_bytes())

    def test_a_temporary_folder_that_is_full(self):
        mounted = subprocess.run(
            ["mount", "-t", "tmpfs", "-o", "size=12k,mode=700", "kestrivane-test", self.temporary],
            capture_output=True,
        )
        if mounted.returncode != 0:
            self.skipTest(f"no file system may be mounted here: {mounted.stderr.decode().strip()}")
        self.addCleanup(output, "umount", "--lazy", self.temporary)
        self.put(FILMS / "telephone-h264.mov", "clip.mov")
        self.start()
        self.rename("clip.mov", "clip.mp4", reverted="clip.mov")
        self.assertPrinted(
            *failure("Conversion error: No space left on device", "clip.mp4", "mov")
        )
        self.assertEqual(self.read("clip.mov"), (FILMS / "telephone-h264.mov").read_bytes())


class LongWork(WatchTestCase):
    def test_pictures_are_converted_while_videos_are_encoded_in_every_folder(self):
        folders = [self.folder / name for name in ("one", "two")]
        pictures = self.base / "pictures"
        for folder in (*folders, pictures):
            folder.mkdir()
        film = self.base / "film.mov"
        output("ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=320x240:duration=20",
               "-c:v", "mjpeg", "-q:v", "20", film)
        names = [f"{folder.name}/{name}" for folder in folders for name in "ab"]
        for name in names:
            self.put(film, f"{name}.mov")
        picture = pictures / "picture.png"
        picture.write_bytes(smallPicture(self.base).read_bytes())
        self.start(*folders, pictures)
        for name in names:
            self.rename(f"{name}.mov", f"{name}.mp4")
        waitUntil(lambda: len(self.filesIn(self.temporary)) == 4, "four exports under way")
        picture.rename(pictures / "picture.jpg")
        self.watch.waitForLine(success("picture.png", "picture.jpg"))
        self.assertEqual(len(self.watch.notifications()), 1, "the picture waited for a film")
        self.assertPrinted(
            success("picture.png", "picture.jpg"),
            *[success(f"{name}.mov", f"{name}.mp4") for name in "ab"] * 2,
        )

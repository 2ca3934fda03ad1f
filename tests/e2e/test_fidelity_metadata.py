"""Nothing of EXIF, GPS, XMP, IPTC, comments or text chunks is in any result."""

import json
import struct
import zlib

from fidelity import FidelityTestCase, run_
from pictures import FORMATS, sample

MARK = "WhoTookThis"

# What to write with exiftool, by the group that it belongs to.
EXIF = ("EXIF:Artist", "EXIF:ImageDescription", "EXIF:Make", "EXIF:Copyright")
XMP = ("XMP-dc:Creator", "XMP-dc:Description", "XMP-photoshop:City")
IPTC = ("IPTC:Keywords", "IPTC:Caption-Abstract")
COMMENT = ("Comment",)
PNG = ("PNG:Author", "PNG:Description")
GPS = ("-GPSLatitude=55.75", "-GPSLatitudeRef=N", "-GPSLongitude=37.62", "-GPSLongitudeRef=E")

# For each source: the tags, whether it holds a place, and the groups that must be found in it.
SOURCES = {
    "jpg": (EXIF + XMP + IPTC + COMMENT, True, {"EXIF", "XMP", "IPTC"}),
    "jpeg": (EXIF + XMP + IPTC + COMMENT, True, {"EXIF", "XMP", "IPTC"}),
    "png": (EXIF + XMP + PNG, True, {"EXIF", "XMP", "PNG"}),
    "heic": (EXIF + XMP, True, {"EXIF", "XMP"}),
    "tiff": (EXIF + XMP + IPTC, True, {"EXIF", "XMP", "IPTC"}),
    "gif": (XMP + COMMENT, False, {"XMP", "GIF"}),
    "webp": (EXIF + XMP, True, {"EXIF", "XMP"}),
    # Nothing but what comes after the pixels, and what is in the PNG inside.
    "bmp": ((), False, set()),
    "ico": (EXIF + XMP + PNG, True, set()),
}

# The groups of exiftool that describe the file, its pixels and its colours, not the person's photo.
HARMLESS = {"SourceFile", "ExifTool", "File", "JFIF", "ICC_Profile", "Composite", "RIFF", "QuickTime"}
HARMLESS |= {"PNG", "GIF", "BMP"}
# Of these groups, and of the tags of TIFF, only what says how the pixels are stored.
STRUCTURE = {
    "PNG": {"ImageWidth", "ImageHeight", "BitDepth", "ColorType", "Compression", "Filter", "Interlace",
            "Transparency", "Palette", "SRGBRendering", "Gamma", "WhitePointX", "WhitePointY", "RedX",
            "RedY", "GreenX", "GreenY", "BlueX", "BlueY", "ProfileName", "SignificantBits"},
    "GIF": {"GIFVersion", "ImageWidth", "ImageHeight", "HasColorMap", "ColorResolutionDepth",
            "BitsPerPixel", "BackgroundColor", "TransparentColor", "FrameCount"},
    "EXIF": {"ImageWidth", "ImageHeight", "BitsPerSample", "Compression", "PhotometricInterpretation",
             "StripOffsets", "SamplesPerPixel", "RowsPerStrip", "StripByteCounts", "Predictor",
             "PlanarConfiguration", "ExtraSamples", "SampleFormat", "Orientation", "SubfileType",
             "FillOrder"},
}  # fmt: skip


def groupsOf(path):
    """What exiftool finds, as {group: {tag: value}}."""
    found = {}
    for key, value in json.loads(run_("exiftool", "-a", "-u", "-G0", "-j", path))[0].items():
        group, _, tag = key.rpartition(":")
        found.setdefault(group or tag, {})[tag] = value
    return found


class Metadata(FidelityTestCase):
    """One test for each source; they are added below."""

    def marked(self, old):
        """A photo that carries everything that its format can."""
        tags, place, groups = SOURCES[old]
        path = self.base / f"marked.{'png' if old == 'ico' else old}"
        inside = sample("png" if old == "ico" else old)
        path.write_bytes(inside.read_bytes())
        if tags:
            written = [f"-{tag}={MARK}" for tag in tags] + list(GPS if place else ())
            run_("exiftool", "-q", "-n", "-overwrite_original", *written, path)
        content = path.read_bytes()
        if path.suffix == ".png":
            content = content[:33] + compressedText() + content[33:]
            path.write_bytes(content)
        found = groupsOf(path)
        self.assertLessEqual(groups, set(found))
        self.assertEqual(place, "GPSLatitude" in found.get("EXIF", {}))
        if old == "ico":
            width, height = struct.unpack(">II", content[16:24])
            content = struct.pack("<3H4B2H2I", 0, 1, 1, width, height, 0, 0, 1, 32, len(content), 22) + content
        if old == "bmp":
            content += MARK.encode()
        self.assertIn(MARK.encode(), content)
        return content

    def check(self, old):
        for extension, path in self.convertToAll(self.marked(old), old):
            with self.subTest(extension=extension):
                with open(path, "rb") as file:
                    content = file.read()
                for coding in ("utf-8", "utf-16-le", "utf-16-be"):
                    self.assertNotIn(MARK.encode(coding), content)
                for group, tags in groupsOf(path).items():
                    self.assertIn(group, HARMLESS | {"EXIF"}, tags)
                    if group in STRUCTURE:
                        self.assertLessEqual(set(tags), STRUCTURE[group])
                    if group == "EXIF":
                        self.assertEqual(extension, "tiff", "whose pixels EXIF's tags describe")
                        self.assertEqual(tags.get("Orientation", "Horizontal (normal)"), "Horizontal (normal)")
                    self.assertNotIn(MARK, str(tags))
                    self.assertNotIn("Comment", tags)


def compressedText():
    """A zTXt chunk, in which the mark is not to be seen in the file's bytes."""
    chunk = b"zTXtTitle\0\0" + zlib.compress(MARK.encode() * 9)
    return struct.pack(">I", len(chunk) - 4) + chunk + struct.pack(">I", zlib.crc32(chunk))


def addSource(old):
    def test(self):
        self.check(old)

    test.__name__ = f"test_{old}"
    test.__qualname__ = f"Metadata.{test.__name__}"
    setattr(Metadata, test.__name__, test)


for _old in FORMATS:
    addSource(_old)

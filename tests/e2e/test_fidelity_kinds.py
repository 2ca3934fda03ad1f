"""Every kind of picture that a format knows becomes the same picture in all others, as ImageMagick
sees them; what a format cannot hold is lost in the way that is promised."""

import numpy

from fidelity import FidelityTestCase, difference, overWhite, run_, seen
from pictures import FORMATS, SAMPLES, iconSide

# Formats that hold 8-bit pixels, with alpha if there is any, as they are.
EXACT = ("png", "tiff", "bmp")
# The mean difference of 255 that the others' coding may cause in a small, sharp picture.
LOSSY = {"jpg": 6, "jpeg": 6, "heic": 6, "webp": 6, "gif": 9, "ico": 9}

# test: (sample, the mean difference of 255 that reading it another way may make, preparation of what
# ImageMagick reads)
KINDS = {
    "cmyk_jpeg": ("cmyk.jpg", 2, ()),
    "ycck_jpeg": ("ycck.jpg", 2, ()),
    "grey_jpeg": ("grey.jpg", 0.01, ()),
    "progressive_jpeg": ("progressive.jpg", 0.7, ()),
    "arithmetic_jpeg": ("arithmetic.jpg", 0.01, ()),
    "palette_png": ("palette.png", 0, ()),
    "one_bit_png": ("one-bit.png", 0, ()),
    "two_bit_png": ("grey-2bit.png", 0, ()),
    "interlaced_png": ("interlaced.png", 0, ("-rotate", "180")),
    "sixteen_bit_png": ("deep.png", 0.51, ()),
    "transparent_png": ("transparent.png", 0, ()),
    "tiled_tiff": ("tiled.tiff", 0, ()),
    "planar_tiff": ("planar.tiff", 0, ()),
    "multi_strip_tiff": ("strips.tiff", 0, ()),
    "float_tiff": ("float.tiff", 0.51, ()),
    "sixteen_bit_tiff": ("deep.tiff", 0.51, ()),
    "cmyk_tiff": ("cmyk.tiff", 2, ()),
    "fax_tiff": ("fax.tiff", 0, ()),
    "jpeg_in_tiff": ("jpeg-inside.tiff", 0.7, ()),
    "local_palette_gif": ("local-palette.gif", 0, ()),
    "small_first_frame_gif": ("small-frame.gif", 0, ("-background", "none", "-flatten")),
    "animated_gif": ("animated.gif", 0, ()),
    "lossless_webp": ("lossless.webp", 0, ()),
    "transparent_webp": ("transparent.webp", 0, ()),
    "animated_webp": ("animated.webp", 0, ("transparent.webp",)),
    "transparent_heic": ("transparent.heic", 1.5, ()),
    "ten_bit_heic": ("deep.heic", 1.5, ()),
    "grid_heic": ("grid.heic", 1.5, ()),
    "several_in_ico": ("several.ico", 0, ()),
    "png_in_ico": ("png-inside.ico", 0, ()),
}


class Kinds(FidelityTestCase):
    """One test for each kind and all other formats; they are added below."""

    def check(self, name, tolerance, preparation):
        old = name.rpartition(".")[2]
        expected = self.reference(name, old, preparation)
        for extension, path in self.convertToAll(SAMPLES / name, old):
            with self.subTest(extension=extension):
                allowed = tolerance if extension in EXACT else tolerance + LOSSY[extension]
                shown = seen(path, extension)
                self.assertLessEqual(difference(as_(extension, expected), shown), allowed)

    def reference(self, name, old, preparation):
        if old == "ico":
            # ImageMagick would read the first picture; the largest counts.
            sizes = run_("identify", "-format", "%w %p\n", f"ICO:{SAMPLES / name}").decode()
            largest = max((int(line.split()[0]), line.split()[1]) for line in sizes.splitlines())[1]
            self.assertGreater(len(sizes.splitlines()), 1)
            found = run_("convert", f"ICO:{SAMPLES / name}[{largest}]", "PNG32:-")
            (self.base / "largest.png").write_bytes(found)
            return seen(self.base / "largest.png", "png")
        if name == "animated.webp":
            # Its first frame, which ImageMagick does not take apart.
            name, preparation = preparation[0], ()
        return seen(SAMPLES / name, old, *preparation)


def as_(extension, picture):
    """What must be seen where this format cannot hold all of it."""
    if extension == "ico":
        height, width = picture.shape[:2]
        side = min(width, height)
        left, top = (width - side) // 2, (height - side) // 2
        return scaled(picture[top : top + side, left : left + side], iconSide((side, side)))
    if extension in ("jpg", "jpeg"):
        return numpy.dstack([overWhite(picture), numpy.full(picture.shape[:2], 255.0)])
    if extension == "gif":
        return numpy.dstack([picture[..., :3], 255.0 * (picture[..., 3] >= 128)])
    return picture


def scaled(square, side):
    raw = square.round().astype(numpy.uint8).tobytes()
    size = f"{square.shape[0]}x{square.shape[0]}"
    made = run_("convert", "-size", size, "-depth", "8", "RGBA:-", "-resize", f"{side}x{side}!",
                "-depth", "8", "RGBA:-", input=raw)  # fmt: skip
    return numpy.frombuffer(made, numpy.uint8).reshape(side, side, 4).astype(float)


def addKind(kind):
    def test(self):
        self.check(*KINDS[kind])

    test.__name__ = f"test_{kind}"
    test.__qualname__ = f"Kinds.{test.__name__}"
    setattr(Kinds, test.__name__, test)


for _kind in KINDS:
    addKind(_kind)


class DepthAndGrey(FidelityTestCase):
    def tagOf(self, path, tag):
        return run_("exiftool", "-s3", f"-{tag}", path).decode().strip()

    def assertDeep(self, picture):
        """The lower bytes say something of their own."""
        self.assertGreater(numpy.abs(picture - 257 * (picture // 257)).max(), 0)

    def checkSixteenBits(self, old, new):
        source = SAMPLES / f"deep.{old}"
        expected = seen(source, old, depth=16)
        self.assertDeep(expected)
        lossless, heic = self.convertAll([(source, old, new), (source, old, "heic")])
        self.assertTrue(numpy.array_equal(seen(lossless, new, depth=16), expected))
        self.assertEqual(self.tagOf(heic, "BitDepthLuma"), "10")

    def test_sixteen_bits_of_png_stay_where_the_target_can(self):
        self.checkSixteenBits("png", "tiff")

    def test_sixteen_bits_of_tiff_stay_where_the_target_can(self):
        self.checkSixteenBits("tiff", "png")

    def test_ten_bits_stay_where_the_target_can(self):
        png, tiff = self.convertAll([(SAMPLES / "deep.heic", "heic", new) for new in ("png", "tiff")])
        self.assertEqual(self.tagOf(png, "BitDepth"), "16")
        self.assertEqual(self.tagOf(tiff, "BitsPerSample"), "16 16 16")
        # libheif's own program fills up the lower bits in another way: by up to two steps of ten.
        expected = seen(SAMPLES / "deep.heic", "heic", depth=16)
        for path, extension in ((png, "png"), (tiff, "tiff")):
            shown = seen(path, extension, depth=16)
            self.assertDeep(shown)
            self.assertLessEqual(numpy.abs(shown - expected).max(), 2 * 65535 / 1023)

    def test_grey_stays_grey(self):
        tags = {
            "jpg": ("ColorComponents", "1"), "jpeg": ("ColorComponents", "1"),
            "png": ("ColorType", "Grayscale"), "tiff": ("SamplesPerPixel", "1"),
            "bmp": ("BitDepth", "8"), "heic": ("ChromaFormat", "Monochrome"),
        }  # fmt: skip
        for extension, path in self.convertToAll(SAMPLES / "grey-2bit.png", "png"):
            with self.subTest(extension=extension):
                if extension in tags:
                    tag, value = tags[extension]
                    self.assertEqual(self.tagOf(path, tag), value)
                colours = seen(path, extension)[..., :3]
                self.assertLessEqual((colours.max(axis=2) - colours.min(axis=2)).max(), 1)

    def test_transparency_stays_or_is_laid_over_white(self):
        source = seen(SAMPLES / "transparent.png", "png")
        self.assertEqual(source[0, 0, 3], 0)
        for extension, path in self.convertToAll(SAMPLES / "transparent.png", "png"):
            with self.subTest(extension=extension):
                corner = seen(path, extension)[0, 0]
                if extension in ("jpg", "jpeg"):
                    self.assertGreater(corner.min(), 250)
                else:
                    self.assertEqual(corner[3], 0)

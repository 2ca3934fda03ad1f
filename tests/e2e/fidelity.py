"""What other programs see in a picture, as numbers; none of the program's own code takes part."""

import io
import os
import subprocess
import tempfile

import numpy
from PIL import Image, ImageCms

from harness import WatchTestCase, success
from pictures import FORMATS
from waiting import PATIENCE, output


def seen(path, extension, *preparation, depth=8):
    """RGBA as ImageMagick decodes the first picture and after this preparation, in sRGB."""
    if extension == "heic":  # whose alpha ImageMagick overlooks
        with tempfile.TemporaryDirectory() as folder:
            return seen(shownByLibheif_(path, folder), "png", *preparation, depth=depth)
    command = ("convert", f"{FORMATS[extension][0]}:{os.fsdecode(path)}[0]", *preparation)
    command += ("-colorspace", "sRGB", "-depth", str(depth), "PAM:-")
    decoded = run_(*command)
    size = run_("identify", "-format", "%w %h", "PAM:-", input=decoded).split()
    raw = run_("convert", "PAM:-", "-depth", str(depth), "-endian", "LSB", "RGBA:-", input=decoded)
    kind = numpy.uint8 if depth == 8 else numpy.dtype("<u2")
    return numpy.frombuffer(raw, kind).reshape(int(size[1]), int(size[0]), 4).astype(float)


def run_(*command, input=None):
    source = {"stdin": subprocess.DEVNULL} if input is None else {"input": input}
    done = subprocess.run(command, capture_output=True, timeout=PATIENCE, **source)
    if done.returncode != 0:
        raise AssertionError(f"{command}: {done.stderr.decode(errors='replace')}")
    return done.stdout


def overWhite(rgba):
    alpha = rgba[..., 3:] / 255
    return rgba[..., :3] * alpha + 255 * (1 - alpha)


def difference(left, right):
    """The mean difference of 255, of the colours over white and of the alpha channels together."""
    if left.shape != right.shape:
        raise AssertionError(f"sizes {left.shape} and {right.shape}")
    colours = numpy.abs(overWhite(left) - overWhite(right)).mean()
    return max(colours, numpy.abs(left[..., 3] - right[..., 3]).mean())


def opened(path, extension):
    """The picture as Pillow opens it; HEIC by the way of libheif's own program."""
    if extension == "heic":
        with tempfile.TemporaryDirectory() as folder:
            picture = Image.open(shownByLibheif_(path, folder))
            picture.load()
            return picture
    picture = Image.open(os.fsdecode(path))
    picture.load()
    return picture


def shownByLibheif_(path, folder):
    shown = os.path.join(folder, "shown.png")
    output("heif-convert", os.fsdecode(path), shown)
    return shown


def profileOf(picture):
    data = picture.info.get("icc_profile")
    return ImageCms.ImageCmsProfile(io.BytesIO(data) if data else ImageCms.createProfile("sRGB"))


def inSRGB(picture):
    """The picture with its profile applied, as 8-bit sRGB; colours beyond it become the nearest."""
    sRGB = ImageCms.createProfile("sRGB")
    return ImageCms.profileToProfile(
        picture.convert("RGB"), profileOf(picture), sRGB, ImageCms.Intent.RELATIVE_COLORIMETRIC
    )


def lab(picture, profile):
    """CIE Lab under D50 of an RGB picture, in floating point from the profile's own numbers."""
    values = numpy.asarray(picture.convert("RGB"), float) / 255
    tables = profile.profile
    matrix = numpy.array(
        [tables.red_colorant[0], tables.green_colorant[0], tables.blue_colorant[0]]
    ).T
    xyz = linear_(values, profile) @ matrix.T / numpy.array([0.9642, 1, 0.8249])
    cube = numpy.where(xyz > 216 / 24389, numpy.cbrt(xyz), (24389 / 27 * xyz + 16) / 116)
    return numpy.stack(
        [
            116 * cube[..., 1] - 16,
            500 * (cube[..., 0] - cube[..., 1]),
            200 * (cube[..., 1] - cube[..., 2]),
        ],
        axis=-1,
    )


def linear_(values, profile):
    # Adobe RGB (1998) has the exponent 563/256, sRGB and Display P3 share a curve.
    if "Adobe" in (profile.profile.profile_description or ""):
        return values ** (563 / 256)
    return numpy.where(values <= 0.04045, values / 12.92, ((values + 0.055) / 1.055) ** 2.4)


def deltaE2000(left, right):
    """The colour difference of CIE 142-2001 for each pixel, all weights 1."""
    (l1, a1, b1), (l2, a2, b2) = (numpy.moveaxis(each, -1, 0) for each in (left, right))
    mean7 = ((numpy.hypot(a1, b1) + numpy.hypot(a2, b2)) / 2) ** 7
    stretch = 1.5 - 0.5 * numpy.sqrt(mean7 / (mean7 + 25.0**7))
    c1, c2 = numpy.hypot(a1 * stretch, b1), numpy.hypot(a2 * stretch, b2)
    h1 = numpy.degrees(numpy.arctan2(b1, a1 * stretch)) % 360
    h2 = numpy.degrees(numpy.arctan2(b2, a2 * stretch)) % 360
    grey = c1 * c2 == 0
    turn = numpy.where(grey, 0, (h2 - h1 + 180) % 360 - 180)
    hue = numpy.where(grey, h1 + h2, (h1 + turn / 2) % 360)
    lightness, chroma = (l1 + l2) / 2, (c1 + c2) / 2

    def cosine(factor, degrees):
        return numpy.cos(numpy.radians(factor * hue + degrees))

    weight = 1 - 0.17 * cosine(1, -30) + 0.24 * cosine(2, 0)
    weight += 0.32 * cosine(3, 6) - 0.20 * cosine(4, -63)
    square = (lightness - 50) ** 2
    deltaL = (l2 - l1) / (1 + 0.015 * square / numpy.sqrt(20 + square))
    deltaC = (c2 - c1) / (1 + 0.045 * chroma)
    deltaH = 2 * numpy.sqrt(c1 * c2) * numpy.sin(numpy.radians(turn / 2))
    deltaH = deltaH / (1 + 0.015 * chroma * weight)
    chroma7 = chroma**7
    rotation = -2 * numpy.sqrt(chroma7 / (chroma7 + 25.0**7))
    rotation = rotation * numpy.sin(numpy.radians(60 * numpy.exp(-(((hue - 275) / 25) ** 2))))
    squared = deltaL**2 + deltaC**2 + deltaH**2 + rotation * deltaC * deltaH
    return numpy.sqrt(numpy.maximum(squared, 0))


class FidelityTestCase(WatchTestCase):
    """Renames many files while one program runs."""

    def convertAll(self, sources):
        """`sources` is a list of (file or bytes, old extension, new extension); the names of the
        results come back in that order."""
        names = [(f"{i}.{old}", f"{i}.{new}") for i, (_, old, new) in enumerate(sources)]
        for (content, _, _), (old, _) in zip(sources, names):
            self.put(content, old)
        self.start()
        for old, new in names:
            self.rename(old, new)
        self.assertPrinted(*(success(old, new) for old, new in names))
        return [self.path(new) for _, new in names]

    def convertToAll(self, content, old):
        """(extension, path) for each extension but `old`."""
        others = [each for each in FORMATS if each != old]
        paths = self.convertAll([(content, old, each) for each in others])
        return list(zip(others, paths))

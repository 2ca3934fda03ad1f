"""Photos with colours beyond sRGB look the same in all nine formats."""

import os
import unittest

import numpy
from PIL import Image, ImageFilter

from fidelity import FidelityTestCase, deltaE2000, inSRGB, lab, opened, profileOf
from pictures import FORMATS, SAMPLES, iconSide

# Formats that hold every pixel as it is, apart from the icon's scale.
EXACT = ("png", "tiff", "bmp", "ico")
# Formats that hold no profile: what counts is the picture in sRGB.
WITHOUT_PROFILE = ("gif", "bmp", "ico")


# Lab, Lab, their difference: from "The CIEDE2000 Color-Difference Formula: Implementation Notes,
# Supplementary Test Data, and Mathematical Observations" by Sharma, Wu and Dalal (2005), table 1.
PUBLISHED = (
    ((50, 2.6772, -79.7751), (50, 0, -82.7485), 2.0425),
    ((50, -1.3802, -84.2814), (50, 0, -82.7485), 1.0000),
    ((50, 0, 0), (50, -1, 2), 2.3669),
    ((50, 2.49, -0.001), (50, -2.49, 0.0009), 7.1792),
    ((50, 2.49, -0.001), (50, -2.49, 0.0011), 7.2195),
    ((50, 2.5, 0), (73, 25, -18), 27.1492),
    ((50, 2.5, 0), (58, 24, 15), 19.4535),
    ((60.2574, -34.0099, 36.2677), (60.4626, -34.1751, 39.4387), 1.2644),
    ((61.2901, 3.7196, -5.3901), (61.4292, 2.2480, -4.9620), 1.8731),
    ((22.7233, 20.0904, -46.6940), (23.0331, 14.9730, -42.5619), 2.0373),
    ((90.8027, -2.0831, 1.4410), (91.1528, -1.6435, 0.0447), 1.4441),
    ((2.0776, 0.0795, -1.1350), (0.9033, -0.0636, -0.5514), 0.9082),
)


class DeltaE(unittest.TestCase):
    def test_is_that_of_the_published_pairs(self):
        for left, right, expected in PUBLISHED:
            computed = deltaE2000(numpy.array(left, float), numpy.array(right, float))
            self.assertAlmostEqual(float(computed), expected, 4)


class Colours(FidelityTestCase):
    def measure(self, name):
        """The mean difference in delta E 2000 for each extension."""
        source = opened(SAMPLES / name, "jpg")
        wide = lab(source, profileOf(source))
        # The photo would prove nothing if sRGB could hold it.
        narrow = inSRGB(source)
        self.assertGreater(deltaE2000(wide, lab(narrow, profileOf(narrow))).mean(), 0.3)
        self.assertGreater(deltaE2000(wide, lab(source, profileOf(narrow))).mean(), 3)

        # A JPEG file under the name that leaves the target to be a conversion.
        pairs = [("jpeg" if new == "jpg" else "jpg", new) for new in FORMATS]
        paths = self.convertAll([(SAMPLES / name, old, new) for old, new in pairs])
        return {new: self.compare(source, path, new) for path, (_, new) in zip(paths, pairs)}

    def compare(self, source, path, extension):
        result = opened(path, extension)
        if extension in WITHOUT_PROFILE:
            self.assertNotIn("icc_profile", result.info, extension)
            source = inSRGB(source)
        else:
            self.assertIn("icc_profile", result.info, extension)
        resultProfile, sourceProfile = profileOf(result), profileOf(source)
        result = result.convert("RGB")
        if extension == "ico":
            side = min(source.size)
            left, top = (source.width - side) // 2, (source.height - side) // 2
            source = source.crop((left, top, left + side, top + side))
            source = source.resize((iconSide(source.size),) * 2, Image.Resampling.BICUBIC)
        if extension not in EXACT:
            # The eye sees the mean of the dots, and not the coding's noise in each of them.
            blur = ImageFilter.GaussianBlur(1.5)
            result, source = result.filter(blur), source.filter(blur)
        self.assertEqual(result.size, source.size, extension)
        return deltaE2000(lab(source, sourceProfile), lab(result, resultProfile)).mean()

    def test_pixel_by_pixel_at_the_size_of_the_camera(self):
        # Without the blur: at that size a photo has little detail from one pixel to the next.
        photo = SAMPLES / "full-size.jpg"
        source = opened(photo, "jpg")
        coded = [("jpeg", "jpg"), ("jpg", "heic"), ("jpg", "webp")]
        paths = self.convertAll([(photo, old, new) for old, new in coded])
        for path, (_, extension) in zip(paths, coded):
            result = opened(path, extension)
            with self.subTest(extension=extension):
                left, right = (lab(each, profileOf(each)) for each in (source, result))
                self.assertLess(deltaE2000(left, right).mean(), 1)

    def assertLooksTheSame(self, name):
        measured = self.measure(name)
        if os.environ.get("KESTRIVANE_SHOW"):
            print({extension: round(float(value), 2) for extension, value in measured.items()})
        self.assertEqual(set(measured), set(FORMATS))
        for extension, value in measured.items():
            with self.subTest(extension=extension):
                self.assertLess(value, 1)

    def test_display_p3(self):
        self.assertLooksTheSame("display-p3.jpg")

    def test_adobe_rgb(self):
        self.assertLooksTheSame("adobe-rgb.jpg")

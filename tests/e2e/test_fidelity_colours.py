"""Photos with colours beyond sRGB look the same in all nine formats."""

import os

from PIL import Image, ImageFilter

from fidelity import FidelityTestCase, deltaE2000, inSRGB, lab, opened, profileOf
from pictures import FORMATS, SAMPLES, iconSide

# Formats that hold every pixel as it is, apart from the icon's scale.
EXACT = ("png", "tiff", "bmp", "ico")
# Formats that hold no profile: what counts is the picture in sRGB.
WITHOUT_PROFILE = ("gif", "bmp", "ico")


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

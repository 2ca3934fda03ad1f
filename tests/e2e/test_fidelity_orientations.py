"""The eight orientations, from each format that holds one: the result is upright."""

import subprocess

import numpy
from PIL import Image

from fidelity import FidelityTestCase, opened, overWhite
from pictures import FORMATS, SAMPLES

# How the stored rows and columns become the upright picture.
UPRIGHT = {
    1: lambda stored: stored,
    2: lambda stored: stored[:, ::-1],
    3: lambda stored: stored[::-1, ::-1],
    4: lambda stored: stored[::-1],
    5: lambda stored: stored.swapaxes(0, 1),
    6: lambda stored: stored.swapaxes(0, 1)[:, ::-1],
    7: lambda stored: stored[::-1, ::-1].swapaxes(0, 1),
    8: lambda stored: stored.swapaxes(0, 1)[::-1],
}


# The same for HEIC, which mirrors and then turns to the left.
MIRROR_AND_QUARTERS = {
    1: ("no", 0), 2: ("across", 0), 3: ("no", 2), 4: ("down", 0),
    5: ("across", 1), 6: ("no", 3), 7: ("across", 3), 8: ("no", 1),
}  # fmt: skip

ORIENTATION = 0x0112  # the tag of EXIF


class Orientations(FidelityTestCase):
    """One test for each source; they are added below."""

    def check(self, old):
        photo = Image.open(SAMPLES / "photo.png").convert("RGB").resize((97, 65))
        turned = {value: self.turned(photo, value, old) for value in UPRIGHT}
        stored = overWhite(pixelsOf(turned[1], old))
        cases = [(value, new) for value in UPRIGHT for new in FORMATS if new != old]
        paths = self.convertAll([(turned[value], old, new) for value, new in cases])
        for (value, new), path in zip(cases, paths):
            with self.subTest(value=value, extension=new):
                shown = overWhite(pixelsOf(path, new))
                # Of all eight ways to turn the stored picture, the right one is the most like it.
                off = {each: unlike(new, turn(stored), shown) for each, turn in UPRIGHT.items()}
                self.assertEqual(min(off, key=off.get), value, off)
                self.assertLess(off[value], 12)

    def turned(self, photo, value, extension):
        """A file that shows the photo, taken for stored pixels, as this orientation has it."""
        path = self.base / f"{value}.{extension}"
        if extension != "heic":
            exif = Image.Exif()
            exif[ORIENTATION] = value
            photo.save(path, quality=92, exif=exif)
            self.assertEqual(Image.open(path).getexif()[ORIENTATION], value)
            return path
        source = self.base / f"{value}.png"
        Image.fromarray(UPRIGHT[value](numpy.asarray(photo))).save(source)
        mirror, quarters = MIRROR_AND_QUARTERS[value]
        options = (f"mirror={mirror}", f"quarters={quarters}", "quality=80")
        subprocess.run([SAMPLES / "heic-grid.py", source, path, *options], check=True)
        return path


def pixelsOf(path, extension):
    """RGBA as it is stored, whatever the orientation."""
    return numpy.asarray(opened(path, extension).convert("RGBA"), float)


def unlike(extension, expected, shown):
    if extension == "ico":
        height, width = expected.shape[:2]
        side = min(width, height)
        left, top = (width - side) // 2, (height - side) // 2
        expected = expected[top : top + side, left : left + side]
        # Pixels of the icon's own size, nearest to where they come from.
        places = ((numpy.arange(shown.shape[0]) + 0.5) * side / shown.shape[0]).astype(int)
        expected = expected[places][:, places]
    if expected.shape != shown.shape:
        return 255.0
    return numpy.abs(expected - shown).mean()


def addSource(old):
    def test(self):
        self.check(old)

    test.__name__ = f"test_{old}"
    test.__qualname__ = f"Orientations.{test.__name__}"
    setattr(Orientations, test.__name__, test)


for _old in ("jpg", "png", "tiff", "webp", "heic"):
    addSource(_old)

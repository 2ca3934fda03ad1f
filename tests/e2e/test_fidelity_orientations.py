"""The eight orientations of EXIF, from each format that holds one: the result is upright."""

import numpy

from fidelity import FidelityTestCase, overWhite, run_, seen
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


class Orientations(FidelityTestCase):
    """One test for each source; they are added below."""

    def check(self, old):
        plain = self.base / f"plain.{old}"
        photo = SAMPLES / "photo.png"
        run_("convert", photo, "-resize", "97x65!", "-strip", "-quality", "92", plain)
        stored = overWhite(seen(plain, old))
        cases = []
        for value in UPRIGHT:
            turned = self.base / f"{value}.{old}"
            tag = f"-IFD0:Orientation={value}"
            turned.write_bytes(plain.read_bytes())
            run_("exiftool", "-q", "-n", "-overwrite_original", tag, turned)
            cases += [(value, turned, new) for new in FORMATS if new != old]
        paths = self.convertAll([(turned, old, new) for _, turned, new in cases])
        for (value, _, new), path in zip(cases, paths):
            with self.subTest(value=value, extension=new):
                shown = overWhite(seen(path, new))
                # Of all eight ways to turn the stored picture, the right one is the most like it.
                off = {each: unlike(new, turn(stored), shown) for each, turn in UPRIGHT.items()}
                self.assertEqual(min(off, key=off.get), value, off)
                self.assertLess(off[value], 12)


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


for _old in ("jpg", "png", "tiff", "webp"):
    addSource(_old)

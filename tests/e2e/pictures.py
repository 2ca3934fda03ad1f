"""The pictures that the tests convert, and what is known about their formats."""

import pathlib

from waiting import output

SAMPLES = pathlib.Path(__file__).resolve().parent.parent / "samples"

# Widths and heights of the pictures that the tests make.
SMALL = (64, 48)
LARGE = (4000, 3000)

# extension: (format as `identify` names it, type as `file` names it)
FORMATS = {
    "jpg": ("JPEG", "image/jpeg"),
    "jpeg": ("JPEG", "image/jpeg"),
    "png": ("PNG", "image/png"),
    "heic": ("HEIC", "image/heic"),
    "tiff": ("TIFF", "image/tiff"),
    "gif": ("GIF", "image/gif"),
    "bmp": ("BMP", "image/bmp"),
    "webp": ("WEBP", "image/webp"),
    "ico": ("ICO", "image/vnd.microsoft.icon"),
}


def sample(extension):
    """A small real photo in this format."""
    return SAMPLES / f"photo.{'jpg' if extension == 'jpeg' else extension}"


def smallPicture(folder):
    """A PNG picture made from a real photo, small enough for hundreds of conversions."""
    return resized_(folder / "small.png", SMALL)


def largePicture(folder):
    """A PNG picture whose conversion to HEIC takes long enough to do something meanwhile."""
    return resized_(folder / "large.png", LARGE)


def resized_(path, size):
    if not path.exists():
        geometry = "{}x{}!".format(*size)
        output("convert", sample("jpg"), "-resize", geometry, "-quality", "10", path)
    return path


def sizeOf(path):
    width, height = output("identify", "-format", "%w %h\n", f"{path}[0]").split()[:2]
    return int(width), int(height)


def iconSide(size):
    """The side of the icon that a picture of this size becomes."""
    side = min(size)
    return next((limit for limit in (256, 128, 48, 32) if side > limit), 16)

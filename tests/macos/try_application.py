"""Tries the application on a Mac: starts it with a folder, renames pictures there, and looks at what becomes of
them.

    try_application.py Kestrivane.app

The application must not be sandboxed, as it is given the folder by name. Every check is made, whatever comes of the
others, and each says on a line of its own whether it holds.
"""

import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import zlib

SAMPLES = pathlib.Path(__file__).resolve().parents[1] / "samples"
ATTEMPTS = 12
PATIENCE = 20  # seconds; far more than any of it takes
# How the files of each format begin; the first four bytes of HEIC are a length.
SIGNATURES = {
    ".bmp": (b"BM",),
    ".gif": (b"GIF8",),
    ".heic": (b"ftyp",),
    ".ico": (b"\0\0\1\0",),
    ".jpg": (b"\xff\xd8\xff",),
    ".png": (b"\x89PNG",),
    ".tiff": (b"II*\0", b"MM\0*"),
}


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def red_png(side):
    rows = (b"\0" + b"\xff\0\0" * side) * side
    return (
        b"\x89PNG\r\n\x1a\n"
        + chunk(b"IHDR", struct.pack(">IIBBBBB", side, side, 8, 2, 0, 0, 0))
        + chunk(b"IDAT", zlib.compress(rows))
        + chunk(b"IEND", b"")
    )


def becomes_true(condition, patience=PATIENCE):
    end = time.monotonic() + patience
    while time.monotonic() < end:
        if condition():
            return True
        time.sleep(0.1)
    return False


def has_the_format_of_its_name(file):
    start = file.read_bytes()[4 if file.suffix == ".heic" else 0 :] if file.exists() else b""
    return start.startswith(SIGNATURES[file.suffix])


def pixels_of(picture):
    answer = subprocess.run(
        ["sips", "-g", "pixelWidth", "-g", "pixelHeight", picture], capture_output=True, text=True
    ).stdout.split()
    return tuple(int(word) for word in answer if word.isdigit())


def is_converted(picture, suffix, patience=PATIENCE):
    """Renames a picture and waits a while for its conversion."""
    renamed = picture.rename(picture.with_suffix(suffix))
    return becomes_true(lambda: has_the_format_of_its_name(renamed), patience)


def is_turned_upright(picture):
    return is_converted(picture, ".png") and pixels_of(picture.with_suffix(".png")) == (240, 160)


def is_refused(picture):
    """A picture that cannot be converted gets its old name back, and not a byte of it changes."""
    content = picture.read_bytes()
    renamed = picture.rename(picture.with_suffix(".jpg"))
    return becomes_true(
        lambda: picture.exists() and not renamed.exists() and picture.read_bytes() == content
    )


def keeps_its_attributes(picture):
    """What Finder stores with a file stays with it, and so do its permissions."""
    picture.chmod(0o640)
    subprocess.run(["xattr", "-w", "com.kestrivane.test", "kept", picture], check=True)
    if not is_converted(picture, ".jpg"):
        return False
    renamed = picture.with_suffix(".jpg")
    kept = subprocess.run(
        ["xattr", "-p", "com.kestrivane.test", renamed], capture_output=True, text=True
    ).stdout
    return kept.strip() == "kept" and renamed.stat().st_mode & 0o777 == 0o640


def attempts(folder):
    return [folder / f"{number}.png" for number in range(ATTEMPTS)]


def write_pictures(folder):
    """Beforehand, as the system may report making and renaming as one event."""
    for picture in [*attempts(folder), folder / "attributes.png"]:
        picture.write_bytes(red_png(64))
    (folder / "half-of-one.png").write_bytes((SAMPLES / "photo.png").read_bytes()[:-2000])
    photo = (SAMPLES / "photo.heic").read_bytes()
    (folder / "half-of-another.heic").write_bytes(photo[: len(photo) // 2])
    for suffix in SIGNATURES:
        shutil.copy(SAMPLES / f"photo{suffix}", folder / f"read-{suffix[1:]}{suffix}")
        shutil.copy(SAMPLES / "photo.webp", folder / f"write-{suffix[1:]}.webp")
    shutil.copy(SAMPLES / "telephone.jpg", folder / "turned.jpg")
    shutil.copy(SAMPLES / "telephone.heic", folder / "turned-too.heic")


def checks(folder):
    """Yields what is checked, and whether it holds."""
    # A picture that was renamed before the application watches stays as it is.
    yield "a picture is converted", any(
        is_converted(picture, ".jpg", 5) for picture in attempts(folder)
    )
    for suffix in SIGNATURES:
        picture = folder / f"read-{suffix[1:]}{suffix}"
        yield f"{suffix} is read", is_converted(picture, ".jpg" if suffix == ".png" else ".png")
        yield f"{suffix} is written", is_converted(folder / f"write-{suffix[1:]}.webp", suffix)
    yield "a photo stored turned is upright", is_turned_upright(folder / "turned.jpg")
    yield "so is one in HEIC", is_turned_upright(folder / "turned-too.heic")
    yield "half a PNG is refused", is_refused(folder / "half-of-one.png")
    yield "half a HEIC is refused", is_refused(folder / "half-of-another.heic")
    yield "a file keeps its attributes", keeps_its_attributes(folder / "attributes.png")


def main(bundle):
    program = pathlib.Path(bundle) / "Contents" / "MacOS" / "Kestrivane"
    failures = 0
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name).resolve()
        write_pictures(folder)
        with subprocess.Popen([program, folder]) as application:
            try:
                for check, holds in checks(folder):
                    print("yes" if holds else "NO ", check, flush=True)
                    failures += not holds
                if application.poll() is not None:
                    sys.exit(f"The application has ended with status {application.returncode}.")
            finally:
                application.terminate()
    if failures:
        sys.exit(f"{failures} of the checks do not hold.")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])

"""Tries the application on a Mac: starts it with a folder, renames a picture there, and looks at what becomes
of it.

    try_application.py Kestrivane.app

The application must not be sandboxed, as it is given the folder by name.
"""

import pathlib
import struct
import subprocess
import sys
import tempfile
import time
import zlib

ATTEMPTS = 12
JPEG_SIGNATURE = b"\xff\xd8\xff"


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


def is_converted(picture):
    """Renames a picture and waits a while for its conversion."""
    renamed = picture.rename(picture.with_suffix(".jpg"))
    end = time.monotonic() + 5
    while time.monotonic() < end:
        if renamed.exists() and renamed.read_bytes().startswith(JPEG_SIGNATURE):
            return True
        time.sleep(0.1)
    return False


def main(bundle):
    program = pathlib.Path(bundle) / "Contents" / "MacOS" / "Kestrivane"
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name).resolve()
        # Made beforehand, as the system may report making and renaming as one event.
        pictures = [folder / f"{number}.png" for number in range(ATTEMPTS)]
        for picture in pictures:
            picture.write_bytes(red_png(64))
        with subprocess.Popen([program, folder]) as application:
            try:
                # A picture that was renamed before the application watches stays as it is.
                if not any(is_converted(picture) for picture in pictures):
                    sys.exit(f"None of {ATTEMPTS} pictures was converted.")
                if application.poll() is not None:
                    sys.exit(f"The application has ended with status {application.returncode}.")
            finally:
                application.terminate()
    print("A picture was converted.")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])

"""Makes an icon file of PNG pictures.

    make_icns.py OUTPUT.icns PICTURE.png...

The pictures are squares of 16, 32, 64, 128, 256, 512 or 1024 pixels. The file is a header, "icns" and its length,
then each picture behind its type and length; numbers are 32 bits wide, the highest byte first.
"""

import pathlib
import struct
import sys

# By the side in pixels: for screens of scale 1, and of scale 2 at half as many points.
TYPES = {
    16: ["icp4"],
    32: ["icp5", "ic11"],
    64: ["ic12"],
    128: ["ic07"],
    256: ["ic08", "ic13"],
    512: ["ic09", "ic14"],
    1024: ["ic10"],
}
PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"


def side_of(png):
    """In pixels, from the header, which is the first chunk (PNG, section 11.2.2)."""
    if png[:8] != PNG_SIGNATURE or png[12:16] != b"IHDR":
        raise ValueError("not a PNG picture")
    width, height = struct.unpack(">II", png[16:24])
    if width != height:
        raise ValueError("not a square")
    return width


def icns(pictures):
    entries = b"".join(
        kind.encode() + struct.pack(">I", 8 + len(png)) + png
        for png in pictures
        for kind in TYPES[side_of(png)]
    )
    return b"icns" + struct.pack(">I", 8 + len(entries)) + entries


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    output, *pictures = map(pathlib.Path, sys.argv[1:])
    output.write_bytes(icns([picture.read_bytes() for picture in pictures]))

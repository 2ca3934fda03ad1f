#!/usr/bin/python3
"""Makes sample files that no common tool writes.

    rewrite.py display-p3 PROFILE            an ICC profile of the colour space Display P3
    rewrite.py ycck PICTURE JPEG             four channels, stored as YCCK
    rewrite.py local-palette GIF RESULT      the GIF with its palette moved from the screen to the frame
"""

import pathlib
import struct
import sys

import numpy
from PIL import Image


def displayP3(path):
    """Primaries of SMPTE RP 431-2, white D65, curve of sRGB, after ICC.1:2010 (version 4.3)."""

    def xyz(x, y):
        return numpy.array([x / y, 1, (1 - x - y) / y])

    # The linear adaptation of Bradford from D65 to D50, the white of profiles.
    bradford = numpy.array(
        [[0.8951, 0.2664, -0.1614], [-0.7502, 1.7135, 0.0367], [0.0389, -0.0685, 1.0296]]
    )
    d50, d65 = numpy.array([0.9642, 1, 0.8249]), xyz(0.3127, 0.3290)
    adapt = numpy.linalg.inv(bradford) @ numpy.diag(bradford @ d50 / (bradford @ d65)) @ bradford
    primaries = numpy.array([xyz(0.680, 0.320), xyz(0.265, 0.690), xyz(0.150, 0.060)]).T
    columns = (adapt @ (primaries * (numpy.linalg.inv(primaries) @ d65))).T

    def fixed(*values):
        return struct.pack(f">{len(values)}i", *(round(value * 65536) for value in values))

    def text(words):
        coded = words.encode("utf-16-be")
        return b"mluc" + struct.pack(">5I", 0, 1, 12, 0x656E5553, len(coded)) + struct.pack(">I", 28) + coded

    curve = b"para" + struct.pack(">IHH", 0, 3, 0)
    curve += fixed(2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045)
    tags = {b"desc": text("Display P3"), b"cprt": text("CC0"), b"wtpt": b"XYZ \0\0\0\0" + fixed(*d50)}
    tags[b"chad"] = b"sf32\0\0\0\0" + fixed(*adapt.flatten())
    for name, column in zip((b"rXYZ", b"gXYZ", b"bXYZ"), columns):
        tags[name] = b"XYZ \0\0\0\0" + fixed(*column)
    for name in (b"rTRC", b"gTRC", b"bTRC"):
        tags[name] = curve

    table, data = struct.pack(">I", len(tags)), b""
    for name, content in tags.items():
        table += name + struct.pack(">II", 132 + 12 * len(tags) + len(data), len(content))
        data += content + bytes(-len(content) % 4)
    header = struct.pack(
        ">I4xI4s4s4s6H4s28x", 132 + 12 * len(tags) + len(data), 0x04300000,
        b"mntr", b"RGB ", b"XYZ ", 2026, 1, 1, 0, 0, 0, b"acsp",
    )  # fmt: skip
    header += fixed(*d50) + bytes(48)
    pathlib.Path(path).write_bytes(header + table + data)


def ycck(source, path):
    """Adobe's transform 2: the inverted inks as YCbCr, and black as it is."""
    rgb = numpy.asarray(Image.open(source).convert("RGB"), float)
    black = 255 - rgb.max(axis=2)
    inks = 255 - rgb - black[..., None]
    bright = Image.fromarray((255 - inks).astype(numpy.uint8)).convert("YCbCr")
    stored = numpy.dstack([numpy.asarray(bright), 255 - black]).astype(numpy.uint8)
    # Pillow inverts what it writes.
    Image.fromarray(255 - stored, "CMYK").save(path, quality=90)
    content = bytearray(pathlib.Path(path).read_bytes())
    marker = content.index(b"Adobe", content.index(b"\xff\xee"))
    content[marker + 11] = 2
    pathlib.Path(path).write_bytes(content)


def localPalette(source, path):
    content = bytearray(pathlib.Path(source).read_bytes())
    size = content[10] & 7
    end = 13 + 3 * (2 << size)
    palette, rest = content[13:end], content[end:]
    content[10] &= 0x7F
    frame = 0
    while rest[frame] == 0x21:  # an extension: its label, then blocks until an empty one
        frame += 2
        while rest[frame]:
            frame += 1 + rest[frame]
        frame += 1
    rest[frame + 9] |= 0x80 | size
    rest[frame + 10 : frame + 10] = palette
    pathlib.Path(path).write_bytes(content[:13] + rest)


if __name__ == "__main__":
    tasks = {"display-p3": displayP3, "ycck": ycck, "local-palette": localPalette}
    if len(sys.argv) < 3 or sys.argv[1] not in tasks:
        sys.exit(__doc__)
    tasks[sys.argv[1]](*sys.argv[2:])

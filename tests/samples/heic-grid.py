#!/usr/bin/python3
"""Makes HEIC files as telephones write them: a grid of tiles, turned, with a thumbnail and a profile.

    heic-grid.py PICTURE RESULT [OPTION=VALUE ...]

The tiles are coded by heif-enc; the boxes around them are those of ISO/IEC 14496-12 and 23008-12.

    tile=128            side of a tile
    quality=50
    quarters=0          turns to the left by a quarter, after which the picture is upright
    mirror=no           mirrored before: "across" (left and right change places) or "down"
    profile=FILE        an ICC profile of the picture
    thumbnail=no        "yes" adds one
    depth=8
    missing=0           so many tiles less than the grid has
    odd=0               the last tile is so many pixels smaller
    wider=0             the grid says that it is so many pixels wider than its tiles
"""

import pathlib
import struct
import subprocess
import sys
import tempfile

import numpy
from PIL import Image


def box(kind, *parts):
    body = b"".join(parts)
    return struct.pack(">I4s", 8 + len(body), kind) + body


def fullBox(kind, *parts, version=0, flags=0):
    return box(kind, struct.pack(">I", version << 24 | flags), *parts)


def boxesIn(data, begin, end):
    while begin < end:
        size, kind = struct.unpack_from(">I4s", data, begin)
        yield kind, data[begin + 8 : begin + size]
        begin += size


def coded(pixels, quality, depth):
    """(configuration, coded data) of one picture."""
    with tempfile.TemporaryDirectory() as folder:
        source, result = pathlib.Path(folder, "tile.png"), pathlib.Path(folder, "tile.heic")
        Image.fromarray(pixels).save(source)
        subprocess.run(["heif-enc", "-q", str(quality), "-b", str(depth), source, "-o", result],
                       check=True, stdout=subprocess.DEVNULL)  # fmt: skip
        data = result.read_bytes()
    top = dict(boxesIn(data, 0, len(data)))
    meta = dict(boxesIn(top[b"meta"], 4, len(top[b"meta"])))
    properties = dict(boxesIn(meta[b"iprp"], 0, len(meta[b"iprp"])))[b"ipco"]
    return dict(boxesIn(properties, 0, len(properties)))[b"hvcC"], top[b"mdat"]


class File:
    """Items in the order in which they were added, the first of them the picture."""

    def __init__(self):
        self.items, self.properties, self.references = [], [], []

    def add(self, kind, data, properties, isHidden=False, isInline=False):
        indexes = []
        for property in properties:
            if property not in self.properties:
                self.properties.append(property)
            indexes.append(self.properties.index(property) + 1)
        self.items.append((kind, data, indexes, isHidden, isInline))
        return len(self.items)

    def refer(self, kind, source, *targets):
        body = struct.pack(f">HH{len(targets)}H", source, len(targets), *targets)
        self.references.append(box(kind, body))

    def write(self, path):
        brand = box(b"ftyp", b"heic", bytes(4), b"mif1heic")
        start = 0
        for _ in range(2):  # the second time with the right offsets
            meta = self.meta_(start)
            start = len(brand) + len(meta) + 8
        data = b"".join(data for _, data, _, _, isInline in self.items if not isInline)
        pathlib.Path(path).write_bytes(brand + meta + box(b"mdat", data))

    def meta_(self, start):
        entries, places, associations, inline = b"", b"", b"", b""
        for i, (kind, data, indexes, isHidden, isInline) in enumerate(self.items, 1):
            entry = struct.pack(">HH4sx", i, 0, kind)
            entries += fullBox(b"infe", entry, version=2, flags=int(isHidden))
            offset = len(inline) if isInline else start
            places += struct.pack(">HHHHII", i, int(isInline), 0, 1, offset, len(data))
            if isInline:
                inline += data
            else:
                start += len(data)
            associations += struct.pack(">HB", i, len(indexes)) + bytes(0x80 | n for n in indexes)
        count = len(self.items)
        return fullBox(
            b"meta",
            fullBox(b"hdlr", struct.pack(">I4s12xx", 0, b"pict")),
            fullBox(b"pitm", struct.pack(">H", 1)),
            fullBox(b"iinf", struct.pack(">H", count), entries),
            fullBox(b"iref", *self.references),
            box(b"iprp", box(b"ipco", *self.properties),
                fullBox(b"ipma", struct.pack(">I", count), associations)),
            box(b"idat", inline),
            fullBox(b"iloc", struct.pack(">BBH", 0x44, 0, count), places, version=1),
        )  # fmt: skip


def size(width, height):
    return fullBox(b"ispe", struct.pack(">II", width, height))


def make(pixels, path, tile=128, quality=50, quarters=0, mirror="no", profile="", thumbnail="no",
         depth=8, missing=0, odd=0, wider=0):  # fmt: skip
    shown = pixels
    # What is stored, when a reader mirrors first and then turns to the left.
    pixels = numpy.rot90(pixels, -quarters)
    flips = {"no": pixels, "across": pixels[:, ::-1], "down": pixels[::-1]}
    pixels = numpy.ascontiguousarray(flips[mirror])
    height, width = pixels.shape[:2]
    columns, rows = -(-width // tile), -(-height // tile)
    # Beyond the picture the tiles go on as at its edge, which readers must not show.
    margin = ((0, rows * tile - height), (0, columns * tile - width), (0, 0))
    padded = numpy.pad(pixels, margin, mode="edge")

    said = (width + wider, height)
    properties = [size(*said)]
    if profile:
        properties.append(box(b"colr", b"prof", pathlib.Path(profile).read_bytes()))
    if mirror != "no":
        properties.append(box(b"imir", bytes([mirror == "across"])))
    if quarters:
        properties.append(box(b"irot", bytes([quarters])))
    file = File()
    layout = struct.pack(">BBBBHH", 0, 0, rows - 1, columns - 1, *said)
    grid = file.add(b"grid", layout, properties, isInline=True)
    places = [(x, y) for y in range(rows) for x in range(columns)]
    tiles = []
    for number, (x, y) in enumerate(places[: len(places) - missing]):
        side = tile - odd if number == len(places) - 1 else tile
        part = padded[y * tile : y * tile + side, x * tile : x * tile + side]
        configuration, data = coded(part, quality, depth)
        about = [size(side, side), box(b"hvcC", configuration)]
        tiles.append(file.add(b"hvc1", data, about, isHidden=True))
    file.refer(b"dimg", grid, *tiles)
    if thumbnail == "yes":
        small = numpy.asarray(Image.fromarray(shown).resize((64, 48)))
        configuration, data = coded(small, quality, depth)
        about = [size(64, 48), box(b"hvcC", configuration)]
        file.refer(b"thmb", file.add(b"hvc1", data, about), grid)
    file.write(path)


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    options = dict(each.split("=", 1) for each in sys.argv[3:])
    texts = ("mirror", "profile", "thumbnail")
    numbers = {name: int(value) for name, value in options.items() if name not in texts}
    picture = numpy.asarray(Image.open(sys.argv[1]).convert("RGB"))
    make(picture, sys.argv[2], **{**options, **numbers})

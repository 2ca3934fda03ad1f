#include <algorithm>
#include <string>

#include <gtest/gtest.h>
#include <zlib.h>

#include "platform/linux/images/PngChunk.hpp"
#include "platform/linux/images/PngCodec.hpp"
#include "platform/linux/images/PngHeader.hpp"
#include "platform/linux/images/PngReader.hpp"
#include "tests/platform/images/ImageTesting.hpp"
#include "tests/platform/images/PngPeer.hpp"

namespace kestrivane::imageTesting {
namespace {

using png::ColorType;
using png::Header;
using png::Interlacing;

PixelBuffer read(std::span<const std::uint8_t> bytes) {
  return decode(pngCodec, bytes);
}

void expectAsLibpngReads(const Header& header, const PngExtras& extras = {}) {
  SCOPED_TRACE(testing::Message() << header.width << " x " << header.height << ", type "
                                  << static_cast<int>(header.colorType) << ", " << header.bitDepth
                                  << " bits, interlacing " << static_cast<int>(header.interlacing));
  const Bytes bytes = writtenByLibpng(header, extras);
  EXPECT_EQ(maximumDifference(read(bytes), readByLibpng(bytes)), 0);
}

/// Of every size at which a pass of an interlaced picture appears or gets a row or column more, and
/// of one that is decompressed on a thread of its own.
void expectAsLibpngReadsAllSizes(Header header, const PngExtras& extras = {}) {
  for (const Interlacing interlacing : {Interlacing::none, Interlacing::adam7}) {
    header.interlacing = interlacing;
    for (std::size_t size = 1; size <= 9; ++size)
      for (const std::size_t other : {std::size_t{1}, 10 - size}) {
        header.width = size;
        header.height = other;
        expectAsLibpngReads(header, extras);
      }
    header.width = 701;
    header.height = 3200 / header.bitDepth;
    expectAsLibpngReads(header, extras);
  }
}

TEST(PngReader, readsEveryKindAsLibpngDoes) {
  for (const ColorType type :
       {ColorType::grey, ColorType::rgb, ColorType::greyAlpha, ColorType::rgba})
    for (const std::size_t depth : {1U, 2U, 4U, 8U, 16U})
      if (depth >= 8 || type == ColorType::grey)
        expectAsLibpngReadsAllSizes({.bitDepth = depth, .colorType = type});
}

TEST(PngReader, readsPalettesAsLibpngDoes) {
  for (const std::size_t depth : {1U, 2U, 4U, 8U}) {
    PngExtras extras;
    for (std::size_t i = 0; i < 3 * std::min<std::size_t>(std::size_t{1} << depth, 200); ++i)
      extras.palette.push_back(static_cast<std::uint8_t>(i * 37));
    expectAsLibpngReadsAllSizes({.bitDepth = depth, .colorType = ColorType::palette}, extras);
    extras.transparency = {0, 130};
    expectAsLibpngReadsAllSizes({.bitDepth = depth, .colorType = ColorType::palette}, extras);
  }
}

TEST(PngReader, readsATransparentColourAsLibpngDoes) {
  PngExtras extras;
  extras.hasKey = true;
  extras.key = 1;
  for (const std::size_t depth : {1U, 2U, 4U})
    expectAsLibpngReadsAllSizes({.bitDepth = depth, .colorType = ColorType::grey}, extras);
  for (const std::size_t depth : {8U, 16U}) {
    extras.key = depth == 8 ? 17 : 17 * 257;
    expectAsLibpngReadsAllSizes({.bitDepth = depth, .colorType = ColorType::grey}, extras);
    expectAsLibpngReadsAllSizes({.bitDepth = depth, .colorType = ColorType::rgb}, extras);
  }
}

/// A file taken apart, to be put together again with sound checksums.
struct Chunk {
  std::string type;
  Bytes content;
};
using Chunks = std::vector<Chunk>;

Chunks chunksOf(const Bytes& bytes) {
  Chunks chunks;
  for (std::size_t place = png::signature.size(); place < bytes.size();) {
    const std::span rest = std::span(bytes).subspan(place);
    const std::size_t length = png::fromBigEndian(rest.first<4>());
    const auto content = rest.subspan(8, length);
    chunks.push_back({{rest.begin() + 4, rest.begin() + 8}, {content.begin(), content.end()}});
    place += length + 12;
  }
  return chunks;
}

Bytes fileOf(const Chunks& chunks) {
  Bytes bytes(png::signature.begin(), png::signature.end());
  const auto append = [&bytes](const auto& part) {
    bytes.insert(bytes.end(), part.begin(), part.end());
  };
  for (const Chunk& chunk : chunks) {
    append(png::bigEndian(static_cast<std::uint32_t>(chunk.content.size())));
    append(chunk.type);
    append(chunk.content);
    append(png::bigEndian(png::chunkChecksum(chunk.type, chunk.content)));
  }
  return bytes;
}

Bytes deflated(const Bytes& bytes) {
  uLongf size = compressBound(bytes.size());
  Bytes stream(size);
  compress2(stream.data(), &size, bytes.data(), bytes.size(), 1);
  stream.resize(size);
  return stream;
}

Chunk headerChunk(std::uint32_t width, std::uint32_t height, std::uint8_t depth,
                  std::uint8_t type) {
  Bytes content;
  for (const auto side : {png::bigEndian(width), png::bigEndian(height)})
    content.insert(content.end(), side.begin(), side.end());
  content.insert(content.end(), {depth, type, 0, 0, 0});
  return {"IHDR", content};
}

/// Grey of 8 bits; `rows` are as they are stored.
Chunks greyPicture(std::uint32_t width, std::uint32_t height, const Bytes& rows) {
  return {headerChunk(width, height, 8, 0), {"IDAT", deflated(rows)}, {"IEND", {}}};
}

Chunks smallPicture() {
  return greyPicture(2, 2, {0, 10, 20, 0, 30, 40});
}

const Bytes smallPixels = {10, 20, 30, 40};

Bytes pixelsIn(const Chunks& chunks) {
  const PixelBuffer picture = read(fileOf(chunks));
  return {picture.row(0), picture.row(0) + picture.byteCount()};
}

TEST(PngReader, readsAStreamSpreadOverChunksOfOneByteAndNone) {
  const Bytes whole = encode(pngCodec, makePicture(61, 43, {Channels::rgba, Depth::sixteen}));
  Chunks spread;
  for (const Chunk& chunk : chunksOf(whole)) {
    if (chunk.type != "IDAT") {
      spread.push_back(chunk);
      continue;
    }
    spread.push_back({"IDAT", {}});
    for (const std::uint8_t byte : chunk.content)
      spread.insert(spread.end(), {{"IDAT", {byte}}, {"IDAT", {}}});
  }
  EXPECT_EQ(maximumDifference(read(fileOf(spread)), read(whole)), 0);
}

TEST(PngReader, passesOverWhatIsNoPicture) {
  Chunks chunks = smallPicture();
  chunks.insert(chunks.begin() + 1, {"teSt", Bytes(200'000, 7)});
  chunks.insert(chunks.end() - 1, {"tEXt", {'a', 0, 'b'}});
  EXPECT_EQ(pixelsIn(chunks), smallPixels);
  Bytes followed = fileOf(smallPicture());
  followed.insert(followed.end(), 1000, 0xEE);
  EXPECT_EQ(maximumDifference(read(followed), read(fileOf(smallPicture()))), 0);
}

TEST(PngReader, passesOverMorePixelsThanThePictureHas) {
  EXPECT_EQ(pixelsIn(greyPicture(2, 2, {0, 10, 20, 0, 30, 40, 0, 50, 60, 9})), smallPixels);
  Bytes rows = {0, 10, 20, 0, 30, 40};
  rows.resize(1'000'000);
  EXPECT_EQ(pixelsIn(greyPicture(2, 2, rows)), smallPixels);
  Chunks chunks = smallPicture();
  chunks[1].content.push_back(1);
  chunks.insert(chunks.begin() + 2, {"IDAT", {1, 2, 3}});
  EXPECT_EQ(pixelsIn(chunks), smallPixels);
}

TEST(PngReader, showsIndicesBeyondThePaletteAsBlack) {
  const Chunks chunks = {headerChunk(2, 1, 8, 3),
                         {"PLTE", {200, 100, 50}},
                         {"IDAT", deflated({0, 0, 1})},
                         {"IEND", {}}};
  EXPECT_EQ(pixelsIn(chunks), (Bytes{200, 100, 50, 0, 0, 0}));
}

TEST(PngReader, turnsPicturesUprightWhereverTheOrientationIsTold) {
  // An EXIF block of one tag: the orientation is 3, bottom right.
  const Chunk exif{"eXIf", {'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0, 0x12, 1, 3,
                            0,   1,   0,  0, 0, 3, 0, 0, 0, 0, 0,    0, 0}};
  const Bytes turned = {40, 30, 20, 10};
  for (const std::ptrdiff_t place : {1, 2}) {
    Chunks chunks = smallPicture();
    chunks.insert(chunks.begin() + place, exif);
    EXPECT_EQ(pixelsIn(chunks), turned) << place;
  }
}

TEST(PngReader, refusesKindsThatTheStandardDoesNotPermit) {
  int permitted = 0;
  for (std::uint8_t depth = 0; depth < 33; ++depth)
    for (std::uint8_t type = 0; type < 9; ++type) {
      Chunks chunks = {headerChunk(1, 1, depth, type),
                       {"PLTE", {1, 2, 3}},
                       {"IDAT", deflated(Bytes(9))},
                       {"IEND", {}}};
      try {
        read(fileOf(chunks));
        ++permitted;
      } catch (const ImageError&) {
      }
    }
  EXPECT_EQ(permitted, 15);
  for (std::size_t method = 10; method < 13; ++method) {
    Chunks chunks = smallPicture();
    chunks[0].content[method] = 2;
    EXPECT_THROW(read(fileOf(chunks)), ImageError) << method;
  }
}

TEST(PngReader, refusesChunksThatAreMissingDoubleOrUnknown) {
  const Chunks sound = smallPicture();
  for (std::size_t missing = 0; missing < sound.size(); ++missing) {
    Chunks chunks = sound;
    chunks.erase(chunks.begin() + static_cast<std::ptrdiff_t>(missing));
    EXPECT_THROW(read(fileOf(chunks)), ImageError) << sound[missing].type;
  }
  const Chunk palette{"PLTE", {1, 2, 3}};
  Chunks colors = {headerChunk(1, 1, 8, 3), palette, {"IDAT", deflated({0, 0})}, {"IEND", {}}};
  EXPECT_NO_THROW(read(fileOf(colors)));
  colors.insert(colors.begin() + 1, palette);
  EXPECT_THROW(read(fileOf(colors)), ImageError) << "two palettes";
  colors.erase(colors.begin() + 1, colors.begin() + 3);
  EXPECT_THROW(read(fileOf(colors)), ImageError) << "no palette";

  for (const Chunk& unwanted : {Chunk{"TeSt", {1}}, Chunk{"te1t", {1}}, sound[0]})
    for (std::ptrdiff_t place = 0; place < 3; ++place) {
      Chunks chunks = sound;
      chunks.insert(chunks.begin() + place, unwanted);
      EXPECT_THROW(read(fileOf(chunks)), ImageError) << unwanted.type << " at " << place;
    }
}

TEST(PngReader, refusesDamagedPalettes) {
  for (const std::size_t size : {0U, 1U, 4U, 769U, 771U}) {
    const Chunks chunks = {
        headerChunk(1, 1, 8, 3), {"PLTE", Bytes(size)}, {"IDAT", deflated({0, 0})}, {"IEND", {}}};
    EXPECT_THROW(read(fileOf(chunks)), ImageError) << size;
  }
}

TEST(PngReader, refusesAStreamThatEndsEarlyWhereverItDoes) {
  const Chunks sound = smallPicture();
  for (std::size_t size = 0; size < sound[1].content.size(); ++size) {
    Chunks chunks = sound;
    chunks[1].content.resize(size);
    EXPECT_THROW(read(fileOf(chunks)), ImageError) << size;
    // The rest after another chunk does not count.
    const auto rest = sound[1].content.begin() + static_cast<std::ptrdiff_t>(size);
    chunks.insert(chunks.begin() + 2,
                  {{"tEXt", {'a', 0}}, {"IDAT", {rest, sound[1].content.end()}}});
    EXPECT_THROW(read(fileOf(chunks)), ImageError) << size;
  }
  EXPECT_THROW(read(fileOf(greyPicture(2, 2, {0, 10, 20, 0, 30}))), ImageError);
}

TEST(PngReader, refusesAWrongChecksumOrHeaderOfTheStream) {
  const Chunks sound = smallPicture();
  const std::size_t size = sound[1].content.size();
  for (const std::size_t place :
       {std::size_t{0}, std::size_t{1}, size - 4, size - 3, size - 2, size - 1}) {
    Chunks chunks = sound;
    chunks[1].content[place] ^= 0x10;
    EXPECT_THROW(read(fileOf(chunks)), ImageError) << place;
  }
  Chunks chunks = sound;
  chunks[1].content[0] = 0x88;  // a window of 64 KiB
  chunks[1].content[1] = 0x1C;
  EXPECT_THROW(read(fileOf(chunks)), ImageError);
}

TEST(PngReader, refusesAnUnknownFilterInAnyRow) {
  EXPECT_THROW(read(fileOf(greyPicture(2, 2, {5, 10, 20, 0, 30, 40}))), ImageError);
  // In the first and the last of so many rows that they are decompressed on a thread of their own.
  constexpr std::uint32_t side = 3000;
  for (const std::size_t row : {std::size_t{0}, std::size_t{side} - 1}) {
    Bytes rows(side * (side + 1));
    rows[row * (side + 1)] = 0xFF;
    EXPECT_THROW(read(fileOf(greyPicture(side, side, rows))), ImageError) << row;
  }
}

TEST(PngReader, refusesDamageThatShowsOnTheOtherThread) {
  constexpr std::uint32_t side = 1500;
  Bytes rows(side * (side + 1));
  for (std::size_t i = 0; i < rows.size(); ++i)
    rows[i] = i % (side + 1) == 0 ? 0 : static_cast<std::uint8_t>(i * i / 7);
  const Chunks sound = greyPicture(side, side, rows);
  EXPECT_NO_THROW(read(fileOf(sound)));
  for (const std::size_t part : {1U, 2U, 3U}) {
    Chunks chunks = sound;
    chunks[1].content.resize(chunks[1].content.size() * part / 4);
    EXPECT_THROW(read(fileOf(chunks)), ImageError) << part;
  }
}

TEST(PngReader, ignoresAProfileThatCannotBeUsed) {
  Bytes tooShort = {'n', 0, 0};
  const Bytes stream = deflated(Bytes(100, 1));
  tooShort.insert(tooShort.end(), stream.begin(), stream.end());
  for (const Bytes& content : {Bytes{}, Bytes{'n'}, Bytes{'n', 0}, Bytes{'n', 0, 1, 2},
                               Bytes{'n', 0, 0, 0x78, 0x9C, 0xFF}, tooShort}) {
    Chunks chunks = smallPicture();
    chunks.insert(chunks.begin() + 1, {"iCCP", content});
    EXPECT_TRUE(read(fileOf(chunks)).iccProfile.empty());
    EXPECT_EQ(pixelsIn(chunks), smallPixels);
  }
}

TEST(PngReader, prefersTheNameOfSRGBToNumbers) {
  const Bytes linear = {0, 1, 0x86, 0xA0};
  Chunks chunks = smallPicture();
  chunks.insert(chunks.begin() + 1, {"gAMA", linear});
  EXPECT_FALSE(read(fileOf(chunks)).iccProfile.empty());
  chunks.insert(chunks.begin() + 1, {"sRGB", {0}});
  EXPECT_TRUE(read(fileOf(chunks)).iccProfile.empty());
}

}  // namespace
}  // namespace kestrivane::imageTesting

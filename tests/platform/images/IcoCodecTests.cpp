#include <algorithm>

#include <gtest/gtest.h>

#include "platform/linux/images/IcoCodec.hpp"
#include "platform/linux/images/LittleEndian.hpp"
#include "platform/linux/images/PngCodec.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

using littleEndian::append16;
using littleEndian::append32;

/// A file of several pictures; what the directory says of their sizes is 0.
Bytes icon(const std::vector<Bytes>& pictures) {
  Bytes bytes{0, 0, 1, 0};
  append16(bytes, static_cast<std::uint32_t>(pictures.size()));
  std::size_t offset = 6 + pictures.size() * 16;
  for (const Bytes& picture : pictures) {
    bytes.resize(bytes.size() + 8);
    append32(bytes, static_cast<std::uint32_t>(picture.size()));
    append32(bytes, static_cast<std::uint32_t>(offset));
    offset += picture.size();
  }
  for (const Bytes& picture : pictures)
    bytes.insert(bytes.end(), picture.begin(), picture.end());
  return bytes;
}

/// A bitmap as it is in an icon, of `width` x `height` pixels; `rest` is palette, colours and mask.
Bytes bitmap(std::uint32_t width, std::uint32_t height, std::uint32_t bits, const Bytes& rest,
             std::uint32_t colourCount = 0) {
  Bytes bytes;
  append32(bytes, 40);
  append32(bytes, width);
  append32(bytes, height * 2);
  append16(bytes, 1);
  append16(bytes, bits);
  for (const std::uint32_t value : {0u, 0u, 0u, 0u, colourCount, 0u})
    append32(bytes, value);
  bytes.insert(bytes.end(), rest.begin(), rest.end());
  return bytes;
}

PixelBuffer readIcon(const std::vector<Bytes>& pictures) {
  return decode(icoCodec, icon(pictures));
}

TEST(IcoCodec, bringsBackTheSamePixels) {
  for (const std::size_t side : {1U, 16U, 31U, 48U, 255U, 256U}) {
    const PixelBuffer picture = makePicture(side, side, rgba8);
    const PixelBuffer read = decode(icoCodec, encode(icoCodec, picture));
    ASSERT_EQ(read.layout(), rgba8);
    EXPECT_EQ(pixelsOf(read), pixelsOf(picture)) << side;
  }
}

TEST(IcoCodec, takesOpaquePicturesAndGreyOnes) {
  for (const Channels channels : {Channels::grey, Channels::greyAlpha, Channels::rgb}) {
    const PixelBuffer picture = makePicture(20, 20, {channels, Depth::eight});
    const PixelBuffer read = decode(icoCodec, encode(icoCodec, picture));
    EXPECT_EQ(pixelsOf(read), pixelsOf(converted(picture, rgba8)));
  }
}

TEST(IcoCodec, writesABitmapBelow256PixelsAndAPNGFromThere) {
  const Bytes small = encode(icoCodec, makePicture(255, 255, rgba8));
  EXPECT_EQ(small[6], 255);
  EXPECT_EQ(littleEndian::load32(&small[14]), small.size() - 22);
  EXPECT_EQ(littleEndian::load32(&small[22]), 40U);
  const Bytes large = encode(icoCodec, makePicture(256, 256, rgba8));
  EXPECT_EQ(large[6], 0);
  EXPECT_EQ(littleEndian::load32(&large[14]), large.size() - 22);
  EXPECT_TRUE(png::recognise(std::span(large).subspan(22)));
}

TEST(IcoCodec, writesWhatOtherProgramsRead) {
  const TemporaryFolder folder;
  for (const std::size_t side : {16U, 33U, 256U}) {
    const PixelBuffer picture = makePicture(side, side, rgba8);
    writeFile(folder / "a.ico", encode(icoCodec, picture));
    const std::string read = outputOf("convert " + (folder / "a.ico").path() + " -depth 8 rgba:-");
    EXPECT_EQ(Bytes(read.begin(), read.end()), pixelsOf(picture)) << side;
  }
}

TEST(IcoCodec, readsWhatOtherProgramsWrite) {
  const TemporaryFolder folder;
  const std::string file = (folder / "a.ico").path();
  outputOf("convert -seed 1 -size 256x256 plasma:red-blue -define icon:auto-resize=256,48,16 " +
           file);
  const PixelBuffer large = converted(decode(icoCodec, readFile(folder / "a.ico")), rgba8);
  EXPECT_EQ(large.width(), 256U);
  for (const char* options : {"-colors 16 -type Palette", "-type TrueColor", "-monochrome"}) {
    outputOf("convert -seed 1 -size 40x40 plasma:red-blue " + std::string(options) + " " + file);
    const PixelBuffer read = converted(decode(icoCodec, readFile(folder / "a.ico")), rgba8);
    const std::string other = outputOf("convert " + file + " -depth 8 rgba:-");
    EXPECT_EQ(pixelsOf(read), Bytes(other.begin(), other.end())) << options;
  }
}

TEST(IcoCodec, takesTheLargestPicture) {
  const std::vector<Bytes> pictures{bitmap(1, 1, 32, Bytes(8, 1)), bitmap(3, 2, 32, Bytes(32, 1)),
                                    bitmap(2, 2, 32, Bytes(24, 1))};
  EXPECT_EQ(readIcon(pictures).width(), 3U);
}

TEST(IcoCodec, takesTheLargestPictureAlsoWhenItIsAPNG) {
  const Bytes large = encode(pngCodec, makePicture(300, 300, rgb8));
  const PixelBuffer read = readIcon({bitmap(2, 2, 32, Bytes(24, 1)), large});
  EXPECT_EQ(read.width(), 300U);
}

TEST(IcoCodec, takesTheDeepestOfTheLargestPictures) {
  const Bytes oneBit = bitmap(1, 1, 1, {0, 0, 0, 0, 9, 9, 9, 0, 0x80, 0, 0, 0, 0, 0, 0, 0});
  const Bytes deep = bitmap(1, 1, 32, {3, 2, 1, 77, 0, 0, 0, 0});
  EXPECT_EQ(pixelsOf(readIcon({oneBit, deep, oneBit})), (Bytes{1, 2, 3, 77}));
}

TEST(IcoCodec, readsEveryDepthWithItsMask) {
  const Bytes mask{0x40, 0, 0, 0};  // the second of two pixels is transparent
  const auto with = [&](Bytes bytes) {
    bytes.insert(bytes.end(), mask.begin(), mask.end());
    return bytes;
  };
  const Bytes wanted{30, 20, 10, 255, 60, 50, 40, 0};
  const Bytes palette{10, 20, 30, 0, 40, 50, 60, 0};
  const auto after = [&](Bytes pixels) {
    pixels.insert(pixels.begin(), palette.begin(), palette.end());
    return with(pixels);
  };
  EXPECT_EQ(pixelsOf(readIcon({bitmap(2, 1, 1, after({0x40, 0, 0, 0}))})), wanted);
  EXPECT_EQ(pixelsOf(readIcon({bitmap(2, 1, 4, after({0x01, 0, 0, 0}), 2)})), wanted);
  EXPECT_EQ(pixelsOf(readIcon({bitmap(2, 1, 8, after({0, 1, 0, 0}), 2)})), wanted);
  EXPECT_EQ(pixelsOf(readIcon({bitmap(2, 1, 24, with({10, 20, 30, 40, 50, 60, 0, 0}))})), wanted);
  EXPECT_EQ(pixelsOf(readIcon({bitmap(2, 1, 32, with({10, 20, 30, 0, 40, 50, 60, 0}))})), wanted)
      << "alpha that is 0 everywhere";
  EXPECT_EQ(pixelsOf(readIcon({bitmap(2, 1, 32, with({10, 20, 30, 0, 40, 50, 60, 9}))})),
            (Bytes{30, 20, 10, 0, 60, 50, 40, 9}))
      << "alpha that is not";
}

TEST(IcoCodec, readsTheMaskFromTheBottom) {
  const Bytes rest{0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0, 0, 0, 0x80, 0, 0, 0};
  const PixelBuffer read = readIcon({bitmap(1, 2, 24, rest)});
  EXPECT_EQ(pixelsOf(read), (Bytes{0, 0, 0, 0, 0, 0, 0, 255}));
}

TEST(IcoCodec, failsOrIsCompleteWhereverTheFileEnds) {
  for (const std::size_t side : {5U, 256U}) {
    const Bytes bytes = encode(icoCodec, makePicture(side, side, rgba8));
    for (std::size_t size = 0; size < bytes.size(); size += side == 5 ? 1 : 97)
      EXPECT_THROW(
          decode(icoCodec, Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size))),
          ImageError)
          << size;
  }
}

TEST(IcoCodec, refusesAPictureOutsideTheFile) {
  const Bytes good = icon({bitmap(1, 1, 32, Bytes(8, 1))});
  ASSERT_NO_THROW(decode(icoCodec, good));
  for (const int field : {14, 18}) {
    for (const std::uint32_t value : {0xFFFFFFFFu, 0x7FFFFFFFu, 1000u}) {
      Bytes bad = good;
      Bytes number;
      append32(number, value);
      std::ranges::copy(number, bad.begin() + field);
      EXPECT_THROW(decode(icoCodec, bad), ImageError) << field << " is " << value;
    }
  }
}

TEST(IcoCodec, refusesWhatCannotBe) {
  EXPECT_THROW(readIcon({}), ImageError) << "no picture";
  EXPECT_THROW(readIcon({{}}), ImageError) << "an empty picture";
  EXPECT_THROW(readIcon({Bytes(100)}), ImageError) << "a picture of zeroes";
  EXPECT_THROW(readIcon({bitmap(30'000, 30'000, 32, Bytes(100))}), ImageError) << "an enormous one";
  EXPECT_THROW(readIcon({bitmap(9, 9, 32, Bytes(100, 1))}), ImageError) << "too few pixels";
  EXPECT_THROW(readIcon({bitmap(1, 1, 24, Bytes(4, 1))}), ImageError) << "no mask";
  Bytes odd = bitmap(1, 1, 32, Bytes(100, 1));
  odd[8] = 3;
  EXPECT_THROW(readIcon({odd}), ImageError) << "a height that is not doubled";
  Bytes count = icon({bitmap(1, 1, 32, Bytes(8, 1))});
  count[4] = count[5] = 0xFF;
  EXPECT_THROW(decode(icoCodec, count), ImageError) << "more pictures than there are";
}

TEST(IcoCodec, refusesASideThatTheFormatCannotHold) {
  EXPECT_THROW(encode(icoCodec, makePicture(257, 16, rgba8)), ImageError);
  EXPECT_THROW(encode(icoCodec, makePicture(16, 257, rgba8)), ImageError);
}

}  // namespace
}  // namespace kestrivane::imageTesting

#include <algorithm>
#include <array>

#include <gtest/gtest.h>

#include "platform/linux/images/ExifOrientation.hpp"
#include "platform/linux/images/JpegCodec.hpp"
#include "platform/linux/images/MadeProfile.hpp"
#include "platform/linux/images/PngCodec.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

TEST(JpegCodec, bringsBackNearlyTheSameColours) {
  const PixelBuffer picture = makePicture(61, 43, rgb8);
  const PixelBuffer read = decode(jpegCodec, encode(jpegCodec, picture));
  EXPECT_LT(meanDifference(picture, read), 2);
}

TEST(JpegCodec, keepsGreyGrey) {
  const PixelBuffer picture = makePicture(61, 43, grey8);
  const PixelBuffer read = decode(jpegCodec, encode(jpegCodec, picture));
  EXPECT_EQ(read.layout(), grey8);
  EXPECT_LT(meanDifference(picture, read), 1);
}

TEST(JpegCodec, laysTransparencyOverWhite) {
  PixelBuffer picture = PixelBuffer::create(16, 16, {Channels::rgba, Depth::eight});
  std::fill_n(picture.row(0), picture.byteCount(), std::uint8_t{0});
  const PixelBuffer read = decode(jpegCodec, encode(jpegCodec, picture));
  ASSERT_EQ(read.layout(), rgb8);
  EXPECT_GE(read.row(8)[0], 254);
}

TEST(JpegCodec, writesLikenessesNoWorseThanOtherProgramsAtTheSameQuality) {
  const TemporaryFolder folder;
  const PixelBuffer picture = decode(pngCodec, readFile(sample("photo.png")));
  const FileURL theirs = folder / "theirs.jpg";
  outputOf("convert " + sample("photo.png").path() + " -quality 90 -sampling-factor 2x2 " +
           theirs.path());
  const PixelBuffer ours = decode(jpegCodec, encode(jpegCodec, picture));
  EXPECT_LE(meanDifference(picture, ours),
            meanDifference(picture, decode(jpegCodec, readFile(theirs))) + 0.05);
}

TEST(JpegCodec, readsPhotosAsOtherProgramsDo) {
  for (const std::string name : {"photo.jpg", "progressive.jpg", "grey.jpg"}) {
    const PixelBuffer picture = decode(jpegCodec, readFile(sample(name)));
    EXPECT_LT(
        meanDifference(converted(picture, rgb8), shownByImageMagick(name, "-colorspace sRGB")), 0.5)
        << name;
  }
}

TEST(JpegCodec, readsArithmeticCoding) {
  EXPECT_EQ(maximumDifference(decode(jpegCodec, readFile(sample("arithmetic.jpg"))),
                              decode(jpegCodec, readFile(sample("grey.jpg")))),
            0);
}

TEST(JpegCodec, turnsThePictureUprightForAllEightOrientations) {
  const PixelBuffer stored = makePicture(48, 32, rgb8);
  const Bytes plain = encode(jpegCodec, stored);
  for (std::uint8_t value = 1; value <= 8; ++value) {
    EXPECT_EQ(maximumDifference(decode(jpegCodec, withOrientation(value, plain)),
                                upright(decode(jpegCodec, plain), static_cast<Orientation>(value))),
              0)
        << int{value};
  }
}

TEST(JpegCodec, readsFourInksAsAdobesProgramsStoreThem) {
  const PixelBuffer picture = decode(jpegCodec, readFile(sample("cmyk.jpg")));
  ASSERT_EQ(picture.layout(), rgb8);
  EXPECT_TRUE(picture.iccProfile.empty());
  EXPECT_LT(meanDifference(picture, shownByImageMagick("cmyk.jpg", "-colorspace sRGB")), 2);
}

TEST(JpegCodec, readsFourInksThroughTheirProfile) {
  const TemporaryFolder folder;
  writeFile(folder / "inks.icc", makeCmykTestProfile());
  // Yellow ink alone, which leaves no trace in the test's profile.
  const std::string command = "convert -size 16x16 xc:'cmyk(0,0,255,0)' -colorspace CMYK ";
  outputOf(command + (folder / "plain.jpg").path());
  outputOf(command + "-profile " + (folder / "inks.icc").path() + " " +
           (folder / "inks.jpg").path());
  EXPECT_LT(decode(jpegCodec, readFile(folder / "plain.jpg")).row(8)[2], 10);
  EXPECT_GT(decode(jpegCodec, readFile(folder / "inks.jpg")).row(8)[2], 245);
}

TEST(JpegCodec, keepsTheProfile) {
  PixelBuffer picture = makePicture(8, 8, rgb8);
  picture.iccProfile = makeProfile(sRGBChromaticities, {1.8});
  EXPECT_EQ(decode(jpegCodec, encode(jpegCodec, picture)).iccProfile, picture.iccProfile);
  EXPECT_FALSE(decode(jpegCodec, readFile(sample("wide-gamut.jpg"))).iccProfile.empty());
}

TEST(JpegCodec, refusesTwelveBits) {
  Bytes bytes = encode(jpegCodec, makePicture(16, 16, grey8));
  const std::array<std::uint8_t, 4> frame = {0xFF, 0xC0, 0, 11};
  const auto start = std::ranges::search(bytes, frame).begin();
  ASSERT_NE(start, bytes.end());
  start[4] = 12;
  EXPECT_THROW(decode(jpegCodec, bytes), ImageError);
}

TEST(JpegCodec, refusesAnEnormousHeaderBeforeItTakesMemory) {
  Bytes bytes = encode(jpegCodec, makePicture(16, 16, grey8));
  const std::array<std::uint8_t, 5> frame = {0xFF, 0xC0, 0, 11, 8};
  const auto start = std::ranges::search(bytes, frame).begin();
  ASSERT_NE(start, bytes.end());
  std::ranges::copy(std::array<std::uint8_t, 4>{0xEA, 0x60, 0xEA, 0x60}, start + 5);
  EXPECT_THROW(decode(jpegCodec, bytes), ImageError);
}

TEST(JpegCodec, refusesATruncatedFileWhereverItEnds) {
  const Bytes bytes = encode(jpegCodec, makePicture(40, 30, rgb8));
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_THROW(decode(jpegCodec, std::span(bytes).first(size)), ImageError) << size;
}

TEST(JpegCodec, overlooksStrayBytesBetweenSegments) {
  const Bytes clean = encode(jpegCodec, makePicture(40, 30, rgb8));
  ASSERT_EQ(clean[3], 0xE0);  // the first segment, of 16 bytes after its marker
  Bytes bytes = clean;
  bytes.insert(bytes.begin() + 20, 5, 0);
  EXPECT_EQ(maximumDifference(decode(jpegCodec, bytes), decode(jpegCodec, clean)), 0);
}

TEST(JpegCodec, refusesBytesLeftOverAfterThePixels) {
  Bytes bytes = encode(jpegCodec, makePicture(40, 30, rgb8));
  // The first few are in the decoder's bit buffer by then and cannot be told from padding.
  bytes.insert(bytes.end() - 2, 20, 0);
  EXPECT_THROW(decode(jpegCodec, bytes), ImageError);
}

TEST(JpegCodec, refusesStrayBytesAmongThePixels) {
  PixelBuffer grey = PixelBuffer::create(16, 8, grey8);
  std::fill_n(grey.row(0), grey.byteCount(), std::uint8_t{128});
  Bytes bytes = encode(jpegCodec, grey);
  const std::array<std::uint8_t, 2> scan = {0xFF, 0xDA};
  const auto start = std::ranges::search(bytes, scan).begin();
  ASSERT_NE(start, bytes.end());
  const Bytes scanHeader(start, start + 10);
  bytes.erase(start, bytes.end());
  // Two blocks of nothing but zeros, with a restart marker between them.
  const Bytes interval = {0xFF, 0xDD, 0, 4, 0, 1};
  bytes.insert(bytes.end(), interval.begin(), interval.end());
  bytes.insert(bytes.end(), scanHeader.begin(), scanHeader.end());
  const std::size_t afterFirst = bytes.size() + 1;
  const Bytes blocks = {0x2B, 0xFF, 0xD0, 0x2B, 0xFF, 0xD9};
  bytes.insert(bytes.end(), blocks.begin(), blocks.end());
  EXPECT_EQ(maximumDifference(decode(jpegCodec, bytes), grey), 0);
  bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(afterFirst), 20, 0x2B);
  EXPECT_THROW(decode(jpegCodec, bytes), ImageError);
}

TEST(JpegCodec, refusesMoreScansThanAnEncoderMakes) {
  // The start of a progressive file up to the end of its first scan; then one scan, all zero, for
  // each other frequency of the brightness: 64 in all.
  const Bytes source = readFile(sample("progressive.jpg"));
  const std::array<std::uint8_t, 2> scan = {0xFF, 0xDA};
  std::size_t end =
      static_cast<std::size_t>(std::ranges::search(source, scan).begin() - source.begin()) + 2;
  while (source[end] != 0xFF || source[end + 1] == 0)
    ++end;
  Bytes bytes(source.begin(), source.begin() + static_cast<std::ptrdiff_t>(end));
  const auto append = [&bytes](std::initializer_list<std::uint8_t> more, std::size_t zeros) {
    bytes.insert(bytes.end(), more);
    bytes.resize(bytes.size() + zeros);
  };
  // A Huffman table with the one symbol "end of block", of one bit.
  append({0xFF, 0xC4, 0, 20, 0x10, 1}, 16);
  constexpr std::size_t brightnessBlocks = 240 / 8 * 160 / 8;
  for (std::uint8_t frequency = 1; frequency < 64; ++frequency)
    append({0xFF, 0xDA, 0, 8, 1, 1, 0, frequency, frequency, 0}, brightnessBlocks / 8);
  Bytes accepted = bytes;
  accepted.insert(accepted.end(), {0xFF, 0xD9});
  EXPECT_EQ(decode(jpegCodec, accepted).width(), 240U);
  constexpr std::size_t colourBlocks = brightnessBlocks / 4;
  append({0xFF, 0xDA, 0, 8, 1, 2, 0, 1, 1, 0}, (colourBlocks + 7) / 8);
  append({0xFF, 0xD9}, 0);
  EXPECT_THROW(decode(jpegCodec, bytes), ImageError);
}

TEST(JpegCodec, refusesASideThatTheFormatCannotHold) {
  EXPECT_THROW(encode(jpegCodec, makePicture(65'501, 1, grey8)), ImageError);
}

}  // namespace
}  // namespace kestrivane::imageTesting

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

constexpr PixelLayout rgb8{Channels::rgb, Depth::eight};
constexpr PixelLayout grey8{Channels::grey, Depth::eight};

/// The sample as ImageMagick shows it.
PixelBuffer shownByImageMagick(const std::string& name) {
  const TemporaryFolder folder;
  const FileURL shown = folder / "shown.png";
  outputOf("convert " + sample(name).path() + " -colorspace sRGB -strip PNG24:" + shown.path());
  return decode(pngCodec, readFile(shown));
}

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
    EXPECT_LT(meanDifference(converted(picture, rgb8), shownByImageMagick(name)), 0.5) << name;
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
    // A segment APP1 with a directory of one entry, right after the start of the file.
    Bytes bytes = {0xFF, 0xD8, 0xFF, 0xE1, 0, 34,    'E', 'x', 'i', 'f', 0,  0, 'M',
                   'M',  0,    42,   0,    0, 0,     8,   0,   1,   1,   18, 0, 3,
                   0,    0,    0,    1,    0, value, 0,   0,   0,   0,   0,  0};
    bytes.insert(bytes.end(), plain.begin() + 2, plain.end());
    EXPECT_EQ(maximumDifference(decode(jpegCodec, bytes),
                                upright(decode(jpegCodec, plain), static_cast<Orientation>(value))),
              0)
        << int{value};
  }
}

TEST(JpegCodec, readsFourInksAsAdobesProgramsStoreThem) {
  const PixelBuffer picture = decode(jpegCodec, readFile(sample("cmyk.jpg")));
  ASSERT_EQ(picture.layout(), rgb8);
  EXPECT_TRUE(picture.iccProfile.empty());
  EXPECT_LT(meanDifference(picture, shownByImageMagick("cmyk.jpg")), 2);
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

TEST(JpegCodec, refusesASideThatTheFormatCannotHold) {
  EXPECT_THROW(encode(jpegCodec, makePicture(65'501, 1, grey8)), ImageError);
}

}  // namespace
}  // namespace kestrivane::imageTesting

#include <gtest/gtest.h>

#include "platform/linux/images/ColorTransform.hpp"
#include "platform/linux/images/MadeProfile.hpp"
#include "platform/linux/images/PngCodec.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

PixelBuffer decodeSample(const std::string& name) {
  return decode(pngCodec, readFile(sample(name)));
}

TEST(PngCodec, bringsBackEveryLayoutExactly) {
  for (const Depth depth : {Depth::eight, Depth::sixteen})
    for (const Channels channels :
         {Channels::grey, Channels::greyAlpha, Channels::rgb, Channels::rgba}) {
      const PixelBuffer picture = makePicture(61, 43, {channels, depth});
      EXPECT_EQ(maximumDifference(picture, decode(pngCodec, encode(pngCodec, picture))), 0);
    }
}

TEST(PngCodec, readsAPalette) {
  const PixelBuffer picture = decodeSample("palette.png");
  EXPECT_EQ(picture.layout(), rgb8);
  EXPECT_EQ(maximumDifference(picture, shownByImageMagick("palette.png")), 0);
}

TEST(PngCodec, readsTwoBitsOfGrey) {
  const PixelBuffer picture = decodeSample("grey-2bit.png");
  ASSERT_EQ(picture.layout(), grey8);
  EXPECT_EQ(maximumDifference(converted(picture, rgb8), shownByImageMagick("grey-2bit.png")), 0);
}

TEST(PngCodec, readsInterlacedPicturesAndTurnsThemUpright) {
  const PixelBuffer picture = decodeSample("interlaced.png");
  EXPECT_EQ(maximumDifference(picture, shownByImageMagick("interlaced.png", "-rotate 180")), 0);
}

TEST(PngCodec, keepsSixteenBits) {
  EXPECT_EQ(decodeSample("deep.png").layout(), rgb16);
}

TEST(PngCodec, keepsTheProfile) {
  PixelBuffer picture = makePicture(8, 8, rgb8);
  picture.iccProfile =
      makeProfile({{0.3127, 0.329}, {0.68, 0.32}, {0.265, 0.69}, {0.15, 0.06}}, {});
  EXPECT_EQ(decode(pngCodec, encode(pngCodec, picture)).iccProfile, picture.iccProfile);
}

TEST(PngCodec, makesAProfileOfAnUnusualGamma) {
  Bytes linear = encode(pngCodec, makePicture(8, 8, rgb8));
  // A gamma of 1 in the unit of the chunk, with its checksum, after signature and header.
  const Bytes gamma = {0, 0, 0, 4, 'g', 'A', 'M', 'A', 0, 1, 0x86, 0xA0, 0x31, 0xE8, 0x96, 0x5F};
  linear.insert(linear.begin() + 33, gamma.begin(), gamma.end());
  const PixelBuffer picture = decode(pngCodec, linear);
  ASSERT_EQ(kindOfProfile(picture.iccProfile), ProfileKind::rgb);
  const auto toSRGB = ColorTransform::toSRGB(picture.iccProfile, rgb8);
  ASSERT_TRUE(toSRGB);
  Bytes pixel = {55, 55, 55};  // 0.2157 of the light, which sRGB stores as 0.502
  toSRGB->convert(pixel.data(), pixel.data(), 1);
  EXPECT_NEAR(pixel[1], 128, 2);
}

TEST(PngCodec, needsNoProfileForTheUsualGamma) {
  EXPECT_TRUE(decodeSample("photo.png").iccProfile.empty());
}

TEST(PngCodec, refusesATruncatedFileWhereverItEnds) {
  const Bytes bytes = encode(pngCodec, makePicture(40, 30, rgb8));
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_THROW(decode(pngCodec, std::span(bytes).first(size)), ImageError) << size;
}

TEST(PngCodec, refusesAFlippedBitAnywhere) {
  const Bytes sound = encode(pngCodec, makePicture(20, 10, rgb8));
  for (std::size_t i = 0; i < sound.size(); ++i) {
    Bytes bytes = sound;
    bytes[i] ^= 0x10;
    EXPECT_THROW(decode(pngCodec, bytes), ImageError) << i;
  }
}

TEST(PngCodec, refusesAnEnormousHeaderBeforeItTakesMemory) {
  // A sound header of 60,000 x 60,000 grey pixels, and nothing after it.
  const Bytes bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0,    0, 0,    13,
                       'I',  'H', 'D', 'R', 0,    0,    0xEA, 0x60, 0,    0, 0xEA, 0x60,
                       8,    0,   0,   0,   0,    0xA5, 0xB9, 0x2A, 0x9E, 0, 0,    0,
                       0,    'I', 'D', 'A', 'T',  0x35, 0xAF, 0x06, 0x1E};
  EXPECT_THROW(decode(pngCodec, bytes), ImageError);
}

}  // namespace
}  // namespace kestrivane::imageTesting

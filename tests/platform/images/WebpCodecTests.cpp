#include <gtest/gtest.h>

#include "platform/linux/images/WebpCodec.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

TEST(WebpCodec, bringsBackNearlyTheSameColours) {
  const PixelBuffer picture = makePicture(61, 43, rgb8);
  const PixelBuffer read = decode(webpCodec, encode(webpCodec, picture));
  EXPECT_LT(meanDifference(picture, read), 2.5);
}

TEST(WebpCodec, takesGrey) {
  const PixelBuffer picture = makePicture(61, 43, {Channels::grey, Depth::eight});
  const PixelBuffer read = decode(webpCodec, encode(webpCodec, picture));
  EXPECT_LT(meanDifference(converted(picture, rgb8), read), 2);
}

TEST(WebpCodec, keepsAlphaAsItIs) {
  const PixelBuffer picture = makePicture(61, 43, rgba8);
  const PixelBuffer read = decode(webpCodec, encode(webpCodec, picture));
  ASSERT_EQ(read.layout(), rgba8);
  for (std::size_t i = 3; i < picture.byteCount(); i += 4)
    ASSERT_EQ(read.row(0)[i], picture.row(0)[i]);
}

TEST(WebpCodec, keepsTheProfile) {
  for (const PixelLayout layout : {rgb8, rgba8}) {
    PixelBuffer picture = makePicture(61, 43, layout);
    picture.iccProfile.assign(501, 'p');
    const PixelBuffer read = decode(webpCodec, encode(webpCodec, picture));
    EXPECT_EQ(read.iccProfile, picture.iccProfile);
    EXPECT_EQ(read.layout(), layout);
  }
}

TEST(WebpCodec, writesWhatOtherProgramsRead) {
  const TemporaryFolder folder;
  for (const std::size_t profileSize : {0U, 700U}) {
    PixelBuffer picture = makePicture(61, 43, rgba8);
    picture.iccProfile.assign(profileSize, 'p');
    writeFile(folder / "a.webp", encode(webpCodec, picture));
    const std::string read =
        outputOf("dwebp -quiet -pam -o - " + (folder / "a.webp").path() + " | tail -c 10492");
    const Bytes ours = pixelsOf(decode(webpCodec, readFile(folder / "a.webp")));
    EXPECT_EQ(Bytes(read.begin(), read.end()), ours);
  }
}

TEST(WebpCodec, readsLosslessPicturesExactly) {
  const TemporaryFolder folder;
  const std::string file = (folder / "a").path();
  outputOf("convert -seed 1 -size 37x23 plasma:red-blue -depth 8 " + file + ".png");
  outputOf("cwebp -quiet -lossless " + file + ".png -o " + file + ".webp");
  const PixelBuffer read = decode(webpCodec, readFile(folder / "a.webp"));
  const std::string wanted = outputOf("convert " + file + ".png -depth 8 rgb:-");
  EXPECT_EQ(pixelsOf(read), Bytes(wanted.begin(), wanted.end()));
}

TEST(WebpCodec, readsTheFirstPictureOfAnAnimation) {
  const TemporaryFolder folder;
  const std::string file = (folder / "a").path();
  outputOf("convert -delay 10 -size 8x6 xc:red xc:lime xc:blue " + file + ".gif");
  outputOf("gif2webp -quiet " + file + ".gif -o " + file + ".webp");
  const PixelBuffer read = converted(decode(webpCodec, readFile(folder / "a.webp")), rgba8);
  ASSERT_EQ(read.width(), 8U);
  ASSERT_EQ(read.height(), 6U);
  EXPECT_EQ(Bytes(read.row(5), read.row(5) + 4), (Bytes{255, 0, 0, 255}));
}

TEST(WebpCodec, laysASmallerFirstFrameOnATransparentCanvas) {
  const TemporaryFolder folder;
  const std::string path = (folder / "").path();
  outputOf("cd " + path + " && convert -size 4x2 xc:red a.png && convert -size 10x8 xc:blue b.png" +
           " && cwebp -quiet -lossless a.png -o a.webp && cwebp -quiet -lossless b.png -o b.webp" +
           " && webpmux -frame a.webp +10+2+4 -frame b.webp +10+0+0 -o c.webp 2> /dev/null");
  const PixelBuffer read = decode(webpCodec, readFile(folder / "c.webp"));
  ASSERT_EQ(read.layout(), rgba8);
  ASSERT_EQ(read.width(), 10U);
  ASSERT_EQ(read.height(), 8U);
  for (std::size_t y = 0; y < 8; ++y)
    for (std::size_t x = 0; x < 10; ++x) {
      const bool inside = x >= 2 && x < 6 && y >= 4 && y < 6;
      const std::uint8_t* pixel = read.row(y) + x * 4;
      EXPECT_EQ(Bytes(pixel, pixel + 4), (inside ? Bytes{255, 0, 0, 255} : Bytes{0, 0, 0, 0}))
          << x << ", " << y;
    }
}

TEST(WebpCodec, turnsThePictureAsItsOrientationSays) {
  const TemporaryFolder folder;
  const std::string path = (folder / "").path();
  // The tag 0x0112 says 6: the first row is the right-hand side.
  const Bytes exif{'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0, 0x12, 1, 3,
                   0,   1,   0,  0, 0, 6, 0, 0, 0, 0, 0,    0, 0};
  writeFile(folder / "exif", exif);
  outputOf("cd " + path + " && convert -size 4x2 xc:red -fill blue -draw 'point 0,0' a.png" +
           " && cwebp -quiet -lossless a.png -o a.webp" +
           " && webpmux -set exif exif a.webp -o b.webp 2> /dev/null");
  const PixelBuffer read = decode(webpCodec, readFile(folder / "b.webp"));
  ASSERT_EQ(read.width(), 2U);
  ASSERT_EQ(read.height(), 4U);
  EXPECT_EQ(Bytes(read.row(0), read.row(0) + 6), (Bytes{255, 0, 0, 0, 0, 255}));
}

TEST(WebpCodec, keepsAlphaThatOnlyAPartOfThePictureHas) {
  PixelBuffer picture = makePicture(41, 149, {Channels::rgba, Depth::eight});
  for (std::size_t y = 0; y < picture.height(); ++y)
    for (std::size_t x = 0; x < picture.width(); ++x)
      picture.row(y)[x * 4 + 3] = y < 100 ? 255 : 128;
  const PixelBuffer read = decode(webpCodec, encode(webpCodec, picture));
  ASSERT_EQ(read.layout(), picture.layout());
  EXPECT_LT(meanDifference(picture, read), 3);
  for (std::size_t y = 0; y < picture.height(); ++y)
    for (std::size_t x = 0; x < picture.width(); ++x)
      ASSERT_EQ(read.row(y)[x * 4 + 3], picture.row(y)[x * 4 + 3]) << x << "," << y;
}

TEST(WebpCodec, refusesATruncatedFileWhereverItEnds) {
  for (const PixelLayout layout : {rgb8, rgba8}) {
    PixelBuffer picture = makePicture(20, 15, layout);
    if (layout == rgba8) picture.iccProfile.assign(20, 'p');
    const Bytes bytes = encode(webpCodec, picture);
    for (std::size_t size = 0; size < bytes.size(); ++size)
      EXPECT_THROW(decode(webpCodec,
                          Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size))),
                   ImageError)
          << size;
  }
}

TEST(WebpCodec, refusesPixelsThatEndBeforeTheirTime) {
  const Bytes bytes = encode(webpCodec, makePicture(64, 64, rgb8));
  // Every length says that the file is whole, yet half of the pixels are missing.
  Bytes half(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 4 * 2));
  half[4] = static_cast<std::uint8_t>(half.size() - 8);
  half[5] = static_cast<std::uint8_t>((half.size() - 8) >> 8);
  half[16] = static_cast<std::uint8_t>(half.size() - 20);
  half[17] = static_cast<std::uint8_t>((half.size() - 20) >> 8);
  EXPECT_THROW(decode(webpCodec, half), ImageError);
}

TEST(WebpCodec, refusesASideThatTheFormatCannotHold) {
  EXPECT_NO_THROW(encode(webpCodec, makePicture(16'383, 1, rgb8)));
  EXPECT_THROW(encode(webpCodec, makePicture(16'384, 1, rgb8)), ImageError);
  EXPECT_THROW(encode(webpCodec, makePicture(1, 16'384, rgb8)), ImageError);
}

TEST(WebpCodec, refusesAnEnormousCanvas) {
  const Bytes header{'R', 'I', 'F', 'F', 22, 0, 0, 0, 'W', 'E',  'B',  'P', 'V',  'P',  '8',
                     'X', 10,  0,   0,   0,  2, 0, 0, 0,   0x5F, 0xEA, 0,   0x5F, 0xEA, 0};
  EXPECT_THROW(decode(webpCodec, header), ImageError);
}

}  // namespace
}  // namespace kestrivane::imageTesting

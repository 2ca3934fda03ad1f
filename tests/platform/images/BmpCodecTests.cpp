#include <algorithm>
#include <array>
#include <cmath>

#include <gtest/gtest.h>

#include "platform/linux/images/BmpCodec.hpp"
#include "platform/linux/images/ColorTransform.hpp"
#include "platform/linux/images/LittleEndian.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

/// A bitmap file written by hand.
struct Bitmap {
  std::uint32_t headerSize = 40;
  std::int32_t width = 2;
  std::int32_t height = 2;
  std::uint16_t bits = 24;
  std::uint32_t compression = 0;
  std::uint32_t colourCount = 0;
  std::vector<std::uint32_t> masks{};    // in the header, or after it if it has no room
  std::vector<std::uint32_t> palette{};  // 0x00RRGGBB
  Bytes pixels{};
  Bytes profile{};  // after the pixels
  std::uint32_t pixelOffsetChange = 0;

  Bytes file() const {
    using namespace littleEndian;
    Bytes info;
    append32(info, headerSize);
    if (headerSize == 12) {
      for (const int value : {width, height, 1})
        append16(info, static_cast<std::uint32_t>(value));
      append16(info, bits);
    } else {
      append32(info, static_cast<std::uint32_t>(width));
      append32(info, static_cast<std::uint32_t>(height));
      append16(info, 1);
      append16(info, bits);
      for (const std::uint32_t value : {compression, 0u, 0u, 0u, colourCount, 0u})
        append32(info, value);
      for (const std::uint32_t mask : masks)
        append32(info, mask);
      info.resize(std::clamp<std::size_t>(headerSize, info.size(), 124));
    }
    for (const std::uint32_t colour : palette) {
      append32(info, colour);
      if (headerSize == 12) info.pop_back();
    }
    if (!profile.empty()) {
      Bytes fields;
      append32(fields, static_cast<std::uint32_t>(info.size() + pixels.size()));
      append32(fields, static_cast<std::uint32_t>(profile.size()));
      std::ranges::copy(fields, info.begin() + 112);
      std::ranges::copy(std::string_view("DEBM"), info.begin() + 56);
    }
    Bytes bytes{'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0};
    append32(bytes, static_cast<std::uint32_t>(14 + info.size()) + pixelOffsetChange);
    for (const Bytes& part : {info, pixels, profile})
      bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
  }

  PixelBuffer read() const { return decode(bmpCodec, file()); }
};

std::vector<std::uint16_t> deepPixelsOf(const PixelBuffer& picture) {
  return {picture.row16(0), picture.row16(0) + picture.byteCount() / 2};
}

TEST(BmpCodec, bringsBackTheSamePixels) {
  for (const PixelLayout layout : {grey8, rgb8, rgba8}) {
    const PixelBuffer picture = makePicture(13, 9, layout);
    const PixelBuffer read = decode(bmpCodec, encode(bmpCodec, picture));
    EXPECT_EQ(read.layout(), layout);
    EXPECT_EQ(pixelsOf(read), pixelsOf(picture));
  }
}

TEST(BmpCodec, writesWhatOtherProgramsRead) {
  const TemporaryFolder folder;
  for (const PixelLayout layout : {grey8, rgb8, rgba8}) {
    const PixelBuffer picture = makePicture(13, 9, layout);
    writeFile(folder / "a.bmp", encode(bmpCodec, picture));
    const std::string read = outputOf("convert " + (folder / "a.bmp").path() + " -depth 8 rgba:-");
    const Bytes wanted = pixelsOf(converted(picture, rgba8));
    EXPECT_EQ(Bytes(read.begin(), read.end()), wanted) << layout.channelCount();
  }
}

TEST(BmpCodec, readsWhatOtherProgramsWrite) {
  const TemporaryFolder folder;
  const std::string file = (folder / "a.bmp").path();
  for (const char* options :
       {"-type TrueColor bmp2:", "-type TrueColor bmp3:", "-type TrueColor bmp:",
        "-colors 200 -type Palette bmp2:", "-colors 200 -type Palette bmp3:",
        "-colors 200 -type Palette -compress RLE bmp3:", "-colors 16 -type Palette bmp3:",
        "-monochrome bmp3:", "-define bmp:subtype=RGB565 bmp:",
        "-define bmp:subtype=RGB555 bmp:"}) {
    outputOf("convert -seed 1 -size 37x23 plasma:red-blue " + std::string(options) + file);
    const PixelBuffer read = converted(decode(bmpCodec, readFile(folder / "a.bmp")), rgb8);
    const std::string other = outputOf("convert " + file + " -depth 8 rgb:-");
    const Bytes pixels = pixelsOf(read);
    ASSERT_EQ(pixels.size(), other.size()) << options;
    for (std::size_t i = 0; i < pixels.size(); ++i)
      ASSERT_NEAR(pixels[i], static_cast<std::uint8_t>(other[i]), 1) << options << " at " << i;
  }
}

TEST(BmpCodec, readsPalettes) {
  const std::vector<std::uint32_t> palette{0x010203, 0xFF0000, 0x00FF00, 0x0000FF};
  const Bytes wanted{0xFF, 0, 0, 0, 0xFF, 0, 1, 2, 3, 0, 0, 0xFF};  // 1 2, 0 3
  const Bitmap two{.bits = 2, .palette = palette, .pixels = {0x30, 0, 0, 0, 0x60, 0, 0, 0}};
  EXPECT_EQ(pixelsOf(two.read()), wanted);
  const Bitmap four{
      .bits = 4, .colourCount = 4, .palette = palette, .pixels = {0x03, 0, 0, 0, 0x12, 0, 0, 0}};
  EXPECT_EQ(pixelsOf(four.read()), wanted);
  const Bitmap eight{
      .bits = 8, .colourCount = 4, .palette = palette, .pixels = {0, 3, 0, 0, 1, 2, 0, 0}};
  EXPECT_EQ(pixelsOf(eight.read()), wanted);
}

TEST(BmpCodec, readsOneBitAsGreyWhenItsColoursAre) {
  Bitmap bitmap{
      .bits = 1, .palette = {0x000000, 0xFFFFFF}, .pixels = {0x40, 0, 0, 0, 0x80, 0, 0, 0}};
  const PixelBuffer read = bitmap.read();
  EXPECT_EQ(read.layout(), grey8);
  EXPECT_EQ(pixelsOf(read), (Bytes{255, 0, 0, 255}));
  bitmap.palette = {0xFF8000, 0xFFFFFF};
  EXPECT_EQ(pixelsOf(bitmap.read()),
            (Bytes{255, 255, 255, 255, 128, 0, 255, 128, 0, 255, 255, 255}));
}

TEST(BmpCodec, readsAPaletteThatIsShorterThanTheDepthAllows) {
  const Bitmap bitmap{
      .bits = 8, .palette = {0x000000, 0x808080}, .pixels = {1, 0, 0, 0, 0, 1, 0, 0}};
  EXPECT_EQ(pixelsOf(bitmap.read()), (Bytes{0, 128, 128, 0}));
}

TEST(BmpCodec, readsTheHeadersOfOS2) {
  const Bitmap first{.headerSize = 12,
                     .bits = 1,
                     .palette = {0x000000, 0x0A1400},
                     .pixels = {0x40, 0, 0, 0, 0x80, 0, 0, 0}};
  EXPECT_EQ(pixelsOf(first.read()), (Bytes{10, 20, 0, 0, 0, 0, 0, 0, 0, 10, 20, 0}));
  const Bitmap second{.headerSize = 64, .width = 1, .height = 1, .pixels = {30, 20, 10, 0}};
  EXPECT_EQ(pixelsOf(second.read()), (Bytes{10, 20, 30}));
}

TEST(BmpCodec, readsRowsFromTheTop) {
  const Bitmap bitmap{.width = 1, .height = -2, .pixels = {3, 2, 1, 0, 6, 5, 4, 0}};
  EXPECT_EQ(pixelsOf(bitmap.read()), (Bytes{1, 2, 3, 4, 5, 6}));
}

TEST(BmpCodec, readsSixteenBits) {
  const Bytes red{0x00, 0x7C, 0x1F, 0x00};  // red, blue
  const Bitmap plain{.height = 1, .bits = 16, .pixels = red};
  EXPECT_EQ(pixelsOf(plain.read()), (Bytes{255, 0, 0, 0, 0, 255}));
  const Bitmap masked{.height = 1,
                      .bits = 16,
                      .compression = 3,
                      .masks = {0xF800, 0x07E0, 0x001F},
                      .pixels = {0x00, 0xF8, 0xE0, 0x03}};
  EXPECT_EQ(pixelsOf(masked.read()), (Bytes{255, 0, 0, 0, 125, 0}));
  const Bitmap withAlpha{.headerSize = 56,
                         .height = 1,
                         .bits = 16,
                         .compression = 3,
                         .masks = {0x0F00, 0x00F0, 0x000F, 0xF000},
                         .pixels = {0x00, 0x8F, 0x0F, 0xF0}};
  EXPECT_EQ(pixelsOf(withAlpha.read()), (Bytes{255, 0, 0, 136, 0, 0, 255, 255}));
}

TEST(BmpCodec, takesTheUnusedByteOfThirtyTwoBitsForWhatItIs) {
  const Bitmap bitmap{.height = 1, .bits = 32, .pixels = {3, 2, 1, 77, 6, 5, 4, 0}};
  const PixelBuffer read = bitmap.read();
  EXPECT_EQ(read.layout(), rgb8);
  EXPECT_EQ(pixelsOf(read), (Bytes{1, 2, 3, 4, 5, 6}));
}

TEST(BmpCodec, readsAlphaWhereAMaskSaysSo) {
  Bitmap bitmap{.headerSize = 108,
                .height = 1,
                .bits = 32,
                .compression = 3,
                .masks = {0xFF0000, 0x00FF00, 0x0000FF, 0xFF000000},
                .pixels = {3, 2, 1, 77, 6, 5, 4, 0}};
  EXPECT_EQ(pixelsOf(bitmap.read()), (Bytes{1, 2, 3, 77, 4, 5, 6, 0}));
  bitmap.headerSize = 40;
  bitmap.compression = 6;
  EXPECT_EQ(pixelsOf(bitmap.read()), (Bytes{1, 2, 3, 77, 4, 5, 6, 0}));
}

TEST(BmpCodec, readsAlphaThatIsZeroEverywhereAsOpaque) {
  const Bitmap bitmap{.headerSize = 56,
                      .height = 1,
                      .bits = 32,
                      .compression = 3,
                      .masks = {0xFF0000, 0x00FF00, 0x0000FF, 0xFF000000},
                      .pixels = {3, 2, 1, 0, 6, 5, 4, 0}};
  EXPECT_EQ(pixelsOf(bitmap.read()), (Bytes{1, 2, 3, 255, 4, 5, 6, 255}));
}

TEST(BmpCodec, keepsMoreThanEightBits) {
  const Bitmap bitmap{.headerSize = 56,
                      .width = 1,
                      .height = 1,
                      .bits = 32,
                      .compression = 3,
                      .masks = {0x3FF00000, 0x000FFC00, 0x000003FF, 0xC0000000},
                      .pixels = {0x01, 0x00, 0xF0, 0xBF}};  // 1023, 0, 1, alpha 2 of 3
  const PixelBuffer read = bitmap.read();
  EXPECT_EQ(read.layout(), (PixelLayout{Channels::rgba, Depth::sixteen}));
  EXPECT_EQ(deepPixelsOf(read), (std::vector<std::uint16_t>{65535, 0, 64, 43690}));
}

TEST(BmpCodec, readsMasksOfAnyWidth) {
  const Bitmap bitmap{.width = 1,
                      .height = 1,
                      .bits = 32,
                      .compression = 3,
                      .masks = {0xFFFFFF00, 0x00000080, 0},
                      .pixels = {0x80, 0xFF, 0xFF, 0x7F}};
  EXPECT_EQ(deepPixelsOf(bitmap.read()), (std::vector<std::uint16_t>{0x7FFF, 65535, 0}));
}

TEST(BmpCodec, readsRunLengthsOfEightBits) {
  const Bitmap bitmap{.width = 4,
                      .height = 3,
                      .bits = 8,
                      .compression = 1,
                      .colourCount = 4,
                      .palette = {0x000000, 0x111111, 0x222222, 0x333333},
                      .pixels = {4, 1, 0, 0,              // bottom row: four of number 1
                                 0, 3, 2, 3, 2, 0, 0, 0,  // three as they stand and a fill byte
                                 0, 2, 2, 0, 1, 3,        // two skipped
                                 0, 1}};
  EXPECT_EQ(pixelsOf(bitmap.read()),
            (Bytes{0, 0, 0x33, 0, 0x22, 0x33, 0x22, 0, 0x11, 0x11, 0x11, 0x11}));
}

TEST(BmpCodec, readsRunLengthsOfFourBits) {
  const Bitmap bitmap{.width = 5,
                      .height = 2,
                      .bits = 4,
                      .compression = 2,
                      .colourCount = 4,
                      .palette = {0x000000, 0x111111, 0x222222, 0x333333},
                      .pixels = {5, 0x12, 0, 0, 0, 5, 0x32, 0x10, 0x20, 0, 0, 1}};
  EXPECT_EQ(pixelsOf(bitmap.read()),
            (Bytes{0x33, 0x22, 0x11, 0, 0x22, 0x11, 0x22, 0x11, 0x22, 0x11}));
}

TEST(BmpCodec, fillsWhatRunLengthsLeaveOutWithTheFirstColour) {
  const Bitmap bitmap{.width = 2,
                      .height = 3,
                      .bits = 8,
                      .compression = 1,
                      .colourCount = 2,
                      .palette = {0x444444, 0x111111},
                      .pixels = {0, 2, 0, 1, 1, 1, 0, 1}};
  EXPECT_EQ(pixelsOf(bitmap.read()), (Bytes{0x44, 0x44, 0x11, 0x44, 0x44, 0x44}));
}

TEST(BmpCodec, readsTheEmbeddedProfile) {
  const Bytes profile{'p', 'r', 'o', 'f', 'i', 'l', 'e'};
  Bitmap bitmap{
      .headerSize = 124, .width = 1, .height = 1, .pixels = {3, 2, 1, 0}, .profile = profile};
  EXPECT_EQ(bitmap.read().iccProfile, profile);
  const Bytes bytes = bitmap.file();
  EXPECT_THROW(decode(bmpCodec, std::span(bytes).first(bytes.size() - 1)), ImageError);
}

TEST(BmpCodec, keepsAGreyPaletteColouredWhenThereIsAProfile) {
  const Bitmap bitmap{.headerSize = 124,
                      .width = 1,
                      .height = 1,
                      .bits = 8,
                      .colourCount = 1,
                      .palette = {0x555555},
                      .pixels = {0, 0, 0, 0},
                      .profile = {1, 2, 3}};
  EXPECT_EQ(bitmap.read().layout(), rgb8);
}

/// One pixel (200, 100, 50) of a bitmap whose header has these end points and gammas, as sRGB.
Bytes shownWithCalibration(const std::array<double, 9>& endpoints,
                           const std::array<double, 3>& gammas) {
  Bytes fields;
  for (const double number : endpoints)
    littleEndian::append32(fields, static_cast<std::uint32_t>(std::lround(number * (1 << 30))));
  for (const double gamma : gammas)
    littleEndian::append32(fields, static_cast<std::uint32_t>(std::lround(gamma * (1 << 16))));
  const Bitmap bitmap{.headerSize = 108, .width = 1, .height = 1, .pixels = {50, 100, 200, 0}};
  Bytes file = bitmap.file();
  std::ranges::copy(fields, file.begin() + 14 + 60);
  const PixelBuffer picture = decode(bmpCodec, file);
  Bytes pixel = pixelsOf(picture);
  if (const auto transform = ColorTransform::toSRGB(picture.iccProfile, rgb8))
    transform->convert(pixel.data(), pixel.data(), 1);
  return pixel;
}

TEST(BmpCodec, readsColoursThatAreDescribedByNumbers) {
  // Adobe RGB (1998); what the pixel is in sRGB follows from the definitions of both.
  constexpr std::array<double, 9> tristimuli = {0.57667, 0.29734, 0.02703, 0.18556, 0.62736,
                                                0.07069, 0.18823, 0.07529, 0.99134};
  constexpr std::array<double, 9> chromaticities = {0.64, 0.33, 0.03, 0.21, 0.71,
                                                    0.08, 0.15, 0.06, 0.79};
  for (const auto& endpoints : {tristimuli, chromaticities})
    for (const double gamma : {2.2, 1 / 2.2}) {
      const Bytes shown = shownWithCalibration(endpoints, {gamma, gamma, gamma});
      EXPECT_NEAR(shown[0], 227, 1);
      EXPECT_NEAR(shown[1], 100, 1);
      EXPECT_NEAR(shown[2], 42, 1);
    }
}

TEST(BmpCodec, readsAGammaForEachColour) {
  constexpr std::array<double, 9> ofSRGB = {0.64, 0.33, 0.03, 0.30, 0.60, 0.10, 0.15, 0.06, 0.79};
  const Bytes shown = shownWithCalibration(ofSRGB, {2.2, 1.8, 1.0});
  EXPECT_NEAR(shown[0], 201, 1);
  EXPECT_NEAR(shown[1], 119, 1);
  EXPECT_NEAR(shown[2], 122, 1);
}

TEST(BmpCodec, takesNumbersThatDescribeNoColoursForSRGB) {
  EXPECT_EQ(shownWithCalibration({}, {}), (Bytes{200, 100, 50}));
  EXPECT_EQ(shownWithCalibration({}, {2.2, 2.2, 2.2}), (Bytes{200, 100, 50}));
}

TEST(BmpCodec, writesPicturesOfManyStripsThatOthersRead) {
  const TemporaryFolder folder;
  const FileURL written = folder / "picture.bmp";
  const PixelBuffer picture = makeNoise(701, 900, rgb8);
  writeFile(written, encode(bmpCodec, picture));
  EXPECT_EQ(maximumDifference(picture, decode(bmpCodec, readFile(written))), 0);
  outputOf("convert " + written.path() + " -depth 8 rgb:" + (folder / "picture.rgb").path());
  EXPECT_TRUE(readFile(folder / "picture.rgb") == pixelsOf(picture));
}

TEST(BmpCodec, refusesATruncatedFileWhereverItEnds) {
  for (const PixelLayout layout : {grey8, rgb8, rgba8}) {
    const Bytes bytes = encode(bmpCodec, makePicture(7, 5, layout));
    for (std::size_t size = 0; size < bytes.size(); ++size)
      EXPECT_THROW(decode(bmpCodec, Bytes(bytes.begin(), bytes.begin() + std::ptrdiff_t(size))),
                   ImageError)
          << size;
  }
}

TEST(BmpCodec, refusesTruncatedRunLengths) {
  const Bitmap bitmap{.width = 4,
                      .height = 2,
                      .bits = 8,
                      .compression = 1,
                      .colourCount = 2,
                      .palette = {0x000000, 0x111111},
                      .pixels = {4, 1, 0, 0, 0, 4, 0, 1, 0, 1, 0, 0, 0, 1}};
  const Bytes bytes = bitmap.file();
  EXPECT_EQ(decode(bmpCodec, bytes).height(), 2U);
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_THROW(decode(bmpCodec, Bytes(bytes.begin(), bytes.begin() + std::ptrdiff_t(size))),
                 ImageError)
        << size;
}

TEST(BmpCodec, refusesHeadersThatLie) {
  const Bytes pixels(64);
  const std::vector<std::uint32_t> black{0};
  const std::array<std::pair<const char*, Bitmap>, 19> bad{{
      {"no width", {.width = 0, .pixels = pixels}},
      {"negative width", {.width = -2, .pixels = pixels}},
      {"no height", {.height = 0, .pixels = pixels}},
      {"the least height", {.height = INT32_MIN, .pixels = pixels}},
      {"an enormous area", {.width = 60'000, .height = 60'000, .pixels = pixels}},
      {"a side too long", {.width = 100'000, .height = 1, .pixels = pixels}},
      {"more pixels than bytes", {.width = 16'000, .height = 16'000, .pixels = pixels}},
      {"a header of unknown size", {.headerSize = 41, .pixels = pixels}},
      {"an enormous header", {.headerSize = 0xFFFFFFF0, .pixels = pixels}},
      {"three bits", {.bits = 3, .pixels = pixels}},
      {"sixty-four bits", {.bits = 64, .pixels = pixels}},
      {"bit masks with 24 bits",
       {.bits = 24, .compression = 3, .masks = {1, 2, 4}, .pixels = pixels}},
      {"a mask with a hole",
       {.bits = 32, .compression = 3, .masks = {0x5, 0, 0}, .pixels = pixels}},
      {"a mask above the pixel",
       {.bits = 16, .compression = 3, .masks = {0x10000, 0, 0}, .pixels = pixels}},
      {"a picture in JPEG", {.bits = 24, .compression = 4, .pixels = pixels}},
      {"eight-bit runs of four bits",
       {.bits = 4, .compression = 1, .palette = black, .pixels = pixels}},
      {"runs from the top",
       {.height = -2, .bits = 8, .compression = 1, .palette = black, .pixels = pixels}},
      {"pixels in the header", {.pixels = pixels, .pixelOffsetChange = 0xFFFFFFF0}},
      {"pixels behind the file", {.pixels = pixels, .pixelOffsetChange = 0x7FFFFFF0}},
  }};
  for (const auto& [name, bitmap] : bad)
    EXPECT_THROW(bitmap.read(), ImageError) << name;
  EXPECT_NO_THROW((Bitmap{.pixels = pixels}.read())) << "what the others are changed from";
}

TEST(BmpCodec, refusesPixelsThatCannotBe) {
  const std::vector<std::uint32_t> two{0x000000, 0x111111};
  const auto runs = [&](Bytes pixels) {
    return Bitmap{.bits = 8, .compression = 1, .colourCount = 2, .palette = two, .pixels = pixels};
  };
  EXPECT_NO_THROW(runs({2, 1, 0, 0, 2, 0, 0, 1}).read());
  EXPECT_NO_THROW(runs({4, 1, 0, 0, 4, 0, 0, 1}).read()) << "the fill of a row";
  EXPECT_THROW(runs({2, 2, 0, 0, 2, 0, 0, 1}).read(), ImageError) << "not in the palette";
  EXPECT_THROW(runs({5, 1, 0, 0, 2, 0, 0, 1}).read(), ImageError) << "beyond the row";
  EXPECT_THROW(runs({0, 5, 1, 1, 1, 1, 1, 0, 0, 1}).read(), ImageError) << "beyond the row";
  EXPECT_THROW(runs({0, 0, 0, 0, 1, 1, 0, 1}).read(), ImageError) << "beyond the last row";
  EXPECT_THROW(runs({0, 2, 5, 0, 0, 1}).read(), ImageError) << "a jump to the right";
  EXPECT_THROW(runs({0, 2, 0, 3, 0, 1}).read(), ImageError) << "a jump upwards";
  EXPECT_THROW(
      (Bitmap{.bits = 8, .colourCount = 2, .palette = two, .pixels = {0, 2, 0, 0, 0, 0, 0, 0}}
           .read()),
      ImageError);
}

}  // namespace
}  // namespace kestrivane::imageTesting

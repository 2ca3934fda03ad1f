#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "platform/linux/images/YCbCrToRGB.hpp"

namespace kestrivane::heic {
namespace {

template <typename Sample>
using Samples = std::vector<Sample>;

template <typename Sample>
Samples<Sample> randomSamples(std::size_t count, int bits, std::mt19937& random) {
  Samples<Sample> samples(count);
  for (Sample& sample : samples)
    sample = static_cast<Sample>(random() % (1U << bits));
  return samples;
}

template <typename Sample>
void convert(const YCbCrLoops& loops, const YCbCrMatrix& matrix, const YCbCrRow<Sample>& row,
             std::size_t pixels, Sample* target) {
  if constexpr (sizeof(Sample) == 1)
    loops.convert8(matrix, row, pixels, target);
  else
    loops.convert16(matrix, row, pixels, target);
}

template <typename Sample>
void expectTheSame(int bits) {
  std::mt19937 random(1);
  for (const Chroma chroma : {Chroma::none, Chroma::halved, Chroma::full})
    for (const bool hasAlpha : {false, true})
      for (const std::size_t width : {1U, 2U, 3U, 7U, 33U, 255U, 256U, 257U, 1001U}) {
        const HevcFormat format{width, 1, chroma, bits};
        const auto y = randomSamples<Sample>(width, bits, random);
        const auto cb = randomSamples<Sample>(width, bits, random);
        const auto cr = randomSamples<Sample>(width, bits, random);
        YCbCrRow<Sample> row{.brightness = y.data(), .isHalvedAcross = format.isHalvedAcross()};
        if (chroma != Chroma::none) {
          row.blue = cb.data();
          row.red = cr.data();
        }
        if (hasAlpha) row.alpha = y.data();
        const std::size_t channels = (chroma == Chroma::none ? 1U : 3U) + (hasAlpha ? 1U : 0U);
        const YCbCrMatrix matrix = YCbCrMatrix::make({}, format);
        Samples<Sample> portable(width * channels);
        Samples<Sample> fastest(width * channels, 1);
        convert(portableYCbCrLoops, matrix, row, width, portable.data());
        convert(fastestYCbCrLoops(), matrix, row, width, fastest.data());
        EXPECT_EQ(portable, fastest) << width << " pixels of " << channels << " channels";
        if (hasAlpha) {
          EXPECT_EQ(portable.back(), y.back());
        }
      }
}

TEST(YCbCrToRGB, givesTheSameBytesWithAllLoops) {
  expectTheSame<std::uint8_t>(8);
  expectTheSame<std::uint16_t>(10);
}

/// One pixel, the differences in steps of a sample from their middle.
template <typename Sample>
std::array<int, 3> converted(HevcSignal signal, int bits, int y, int cb, int cr) {
  const HevcFormat format{1, 1, Chroma::full, bits};
  const auto brightness = static_cast<Sample>(y);
  const auto blue = static_cast<Sample>(cb);
  const auto red = static_cast<Sample>(cr);
  const YCbCrRow<Sample> row{.brightness = &brightness, .blue = &blue, .red = &red};
  std::array<Sample, 3> rgb{};
  convert(fastestYCbCrLoops(), YCbCrMatrix::make(signal, format), row, 1, rgb.data());
  return {rgb[0], rgb[1], rgb[2]};
}

using RGB = std::array<int, 3>;

TEST(YCbCrToRGB, knowsTheRanges) {
  EXPECT_EQ(converted<std::uint8_t>({true, 6}, 8, 0, 128, 128), (RGB{0, 0, 0}));
  EXPECT_EQ(converted<std::uint8_t>({true, 6}, 8, 255, 128, 128), (RGB{255, 255, 255}));
  EXPECT_EQ(converted<std::uint8_t>({false, 6}, 8, 16, 128, 128), (RGB{0, 0, 0}));
  EXPECT_EQ(converted<std::uint8_t>({false, 6}, 8, 235, 128, 128), (RGB{255, 255, 255}));
  EXPECT_EQ(converted<std::uint8_t>({false, 6}, 8, 3, 128, 128), (RGB{0, 0, 0}));
  EXPECT_EQ(converted<std::uint16_t>({true, 6}, 10, 1023, 512, 512), (RGB{65535, 65535, 65535}));
  EXPECT_EQ(converted<std::uint16_t>({false, 6}, 10, 940, 512, 512), (RGB{65535, 65535, 65535}));
  EXPECT_EQ(converted<std::uint16_t>({false, 6}, 12, 256, 2048, 2048), (RGB{0, 0, 0}));
}

TEST(YCbCrToRGB, keepsEveryStepOfTenBits) {
  for (int value = 0; value < 1024; ++value) {
    const int expected = static_cast<int>(std::lround(value * 65535.0 / 1023));
    for (const int channel : converted<std::uint16_t>({true, 6}, 10, value, 512, 512))
      ASSERT_NEAR(channel, expected, 1) << value;
  }
}

TEST(YCbCrToRGB, knowsTheMatrices) {
  // Pure red, as each standard codes it (ITU-T H.273, 8.3), comes back.
  const auto red = [](int matrix, double weightRed, double weightBlue) {
    const int y = static_cast<int>(std::lround(255 * weightRed));
    const int cb = static_cast<int>(std::lround(128 - 255 * weightRed / 2 / (1 - weightBlue)));
    return converted<std::uint8_t>({true, matrix}, 8, y, cb, 255);
  };
  const auto expectRed = [](const RGB& color) {
    EXPECT_NEAR(color[0], 255, 3);
    EXPECT_NEAR(color[1], 0, 3);
    EXPECT_NEAR(color[2], 0, 3);
  };
  expectRed(red(1, 0.2126, 0.0722));
  expectRed(red(2, 0.299, 0.114));
  expectRed(red(6, 0.299, 0.114));
  expectRed(red(9, 0.2627, 0.0593));
  // The identity holds green, blue and red; YCgCo the difference of green first.
  EXPECT_EQ(converted<std::uint8_t>({true, 0}, 8, 10, 20, 30), (RGB{30, 10, 20}));
  EXPECT_EQ(converted<std::uint8_t>({true, 8}, 8, 100, 138, 133), (RGB{95, 110, 85}));
}

}  // namespace
}  // namespace kestrivane::heic

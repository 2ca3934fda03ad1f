#include <cmath>

#include <gtest/gtest.h>

#include "platform/linux/images/CodecTable.hpp"
#include "platform/linux/images/LinuxBitmapContext.hpp"
#include "platform/linux/images/LinuxImage.hpp"
#include "platform/linux/images/MadeProfile.hpp"
#include "platform/linux/images/Resampling.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

/// The pixels of an image of the canvas.
PixelBuffer bufferOf(const Image& image) {
  const PixelRows rows =
      dynamic_cast<const LinuxImage&>(image).rows(rgba8, ProfileSupport::embedded);
  PixelBuffer pixels = PixelBuffer::create(rows.width(), rows.height(), rgba8);
  Bytes scratch(rows.scratchBytes());
  for (std::size_t y = 0; y < rows.height(); ++y)
    std::copy_n(rows.row(y, scratch.data()), rows.rowBytes(), pixels.row(y));
  return pixels;
}

PixelBuffer drawn(PixelBuffer picture, std::size_t width, std::size_t height) {
  LinuxBitmapContext context(width, height);
  context.setInterpolationQuality(InterpolationQuality::high);
  context.draw(LinuxImage(std::move(picture)),
               {0, 0, static_cast<double>(width), static_cast<double>(height)});
  return bufferOf(*context.makeImage());
}

PixelBuffer solid(std::size_t width, std::size_t height, std::array<std::uint8_t, 4> color) {
  PixelBuffer picture = PixelBuffer::create(width, height, rgba8);
  for (std::size_t i = 0; i < picture.byteCount(); ++i)
    picture.row(0)[i] = color[i % 4];
  return picture;
}

TEST(Resampling, hasWeightsThatAddUpToOne) {
  for (const auto kernel : {ResamplingKernel::linear, ResamplingKernel::lanczos})
    for (const std::size_t source : {1U, 10U, 600U})
      for (const ResampledPixel& pixel : resample(source, 0, 256, 256, kernel)) {
        double sum = 0;
        for (const float weight : pixel.weights)
          sum += static_cast<double>(weight);
        ASSERT_NEAR(sum, 1, 1e-5);
        ASSERT_LE(pixel.first + pixel.weights.size(), source);
      }
}

TEST(Resampling, leavesPixelsOfTheSameSizeAsTheyAre) {
  const auto pixels = resample(20, 0, 20, 20, ResamplingKernel::lanczos);
  for (std::size_t i = 0; i < pixels.size(); ++i)
    for (std::size_t w = 0; w < pixels[i].weights.size(); ++w)
      ASSERT_NEAR(pixels[i].weights[w], pixels[i].first + w == i ? 1 : 0, 1e-6);
}

TEST(Resampling, hasNoWeightsOutsideOfTheStretch) {
  const auto pixels = resample(8, 2, 4, 10, ResamplingKernel::linear);
  for (std::size_t i = 0; i < pixels.size(); ++i)
    EXPECT_EQ(pixels[i].weights.empty(), i < 2 || i >= 6) << i;
}

TEST(LinuxBitmapContext, isTransparentAtFirst) {
  LinuxBitmapContext context(3, 2);
  EXPECT_EQ(maximumDifference(bufferOf(*context.makeImage()), solid(3, 2, {0, 0, 0, 0})), 0);
}

TEST(LinuxBitmapContext, drawsAPictureOfItsOwnSizeUnchanged) {
  const PixelBuffer result = drawn(makePicture(32, 32, rgb8), 32, 32);
  EXPECT_LE(maximumDifference(result, converted(makePicture(32, 32, rgb8), rgba8)), 1);
}

TEST(LinuxBitmapContext, keepsAColourWhateverTheScale) {
  for (const std::size_t size : {5U, 256U, 700U})
    EXPECT_EQ(maximumDifference(drawn(solid(size, size, {200, 30, 90, 255}), 48, 48),
                                solid(48, 48, {200, 30, 90, 255})),
              0)
        << size;
}

TEST(LinuxBitmapContext, mixesTheColoursOfTransparentPixelsByTheirAlpha) {
  PixelBuffer picture = solid(2, 2, {255, 0, 0, 255});
  for (std::size_t y = 0; y < 2; ++y)
    std::ranges::copy(std::array<std::uint8_t, 4>{0, 255, 0, 0}, picture.row(y) + 4);
  const PixelBuffer result = drawn(std::move(picture), 1, 1);
  EXPECT_EQ(result.row(0)[0], 255);  // the green of what cannot be seen leaves no trace
  EXPECT_EQ(result.row(0)[1], 0);
  EXPECT_NEAR(result.row(0)[3], 128, 1);
}

TEST(LinuxBitmapContext, scalesNearlyAsImageMagickDoes) {
  const TemporaryFolder folder;
  outputOf("convert " + sample("photo.jpg").path() +
           " -filter Lanczos -resize 96x64! PNG24:" + (folder / "scaled.png").path());
  const PixelBuffer theirs = decode(pngCodec, readFile(folder / "scaled.png"));
  const PixelBuffer ours = drawn(decode(jpegCodec, readFile(sample("photo.jpg"))), 96, 64);
  EXPECT_LT(meanDifference(converted(ours, rgb8), theirs), 1);
}

TEST(LinuxBitmapContext, turnsColoursIntoSRGB) {
  PixelBuffer picture = PixelBuffer::create(1, 1, rgb8);
  picture.iccProfile = makeProfile(sRGBChromaticities, {1.0});
  std::fill_n(picture.row(0), 3, std::uint8_t{55});  // 0.2157 of the light, in sRGB 0.502
  EXPECT_NEAR(drawn(std::move(picture), 1, 1).row(0)[0], 128, 1);
}

TEST(LinuxBitmapContext, drawsOverWhatIsThere) {
  LinuxBitmapContext context(4, 4);
  context.draw(LinuxImage(solid(4, 4, {0, 0, 0, 255})), {0, 0, 4, 4});
  context.draw(LinuxImage(solid(4, 4, {255, 255, 255, 128})), {2, 0, 2, 4});
  const PixelBuffer result = bufferOf(*context.makeImage());
  EXPECT_EQ(result.row(1)[1 * 4], 0);
  EXPECT_NEAR(result.row(1)[2 * 4], 128, 1);
  EXPECT_EQ(result.row(1)[2 * 4 + 3], 255);
}

}  // namespace
}  // namespace kestrivane::imageTesting

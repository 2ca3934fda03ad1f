#include <memory>
#include <utility>

#include <gtest/gtest.h>

#include "platform/linux/images/PixelRows.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

/// One pixel in one layout turned into another.
std::vector<int> convertPixel(PixelLayout from, const std::vector<int>& channels, PixelLayout to) {
  PixelBuffer picture = PixelBuffer::create(1, 1, from);
  for (std::size_t i = 0; i < channels.size(); ++i) {
    if (from.depth == Depth::eight)
      picture.row(0)[i] = static_cast<std::uint8_t>(channels[i]);
    else
      picture.row16(0)[i] = static_cast<std::uint16_t>(channels[i]);
  }
  const PixelBuffer result = converted(picture, to);
  if (to.depth == Depth::eight) return {result.row(0), result.row(0) + to.channelCount()};
  return {result.row16(0), result.row16(0) + to.channelCount()};
}

TEST(PixelRows, roundsSixteenBitsToTheNearestEight) {
  for (int value = 0; value <= 65'535; ++value)
    ASSERT_EQ(toEightBits(static_cast<std::uint32_t>(value)), (value + 128) / 257) << value;
  EXPECT_EQ(convertPixel(grey16, {128}, grey8), std::vector{0});
  EXPECT_EQ(convertPixel(grey16, {129}, grey8), std::vector{1});
}

TEST(PixelRows, widensEightBitsSoThatWhiteStaysWhite) {
  EXPECT_EQ(convertPixel({Channels::grey, Depth::eight}, {255}, grey16), std::vector{65'535});
  EXPECT_EQ(convertPixel({Channels::grey, Depth::eight}, {1}, grey16), std::vector{257});
}

TEST(PixelRows, makesGreyIntoEqualColours) {
  EXPECT_EQ(convertPixel({Channels::grey, Depth::eight}, {77}, rgba8),
            (std::vector{77, 77, 77, 255}));
  EXPECT_EQ(convertPixel({Channels::greyAlpha, Depth::eight}, {77, 5}, rgba8),
            (std::vector{77, 77, 77, 5}));
}

TEST(PixelRows, laysTransparencyOverWhite) {
  EXPECT_EQ(convertPixel(rgba8, {0, 100, 255, 0}, rgb8), (std::vector{255, 255, 255}));
  EXPECT_EQ(convertPixel(rgba8, {0, 100, 255, 255}, rgb8), (std::vector{0, 100, 255}));
  EXPECT_EQ(convertPixel(rgba8, {0, 100, 255, 51}, rgb8), (std::vector{204, 224, 255}));
  EXPECT_EQ(convertPixel({Channels::greyAlpha, Depth::sixteen}, {0, 32'768}, grey16),
            std::vector{32'767});
}

TEST(PixelRows, hasRowsInPlaceWhenNothingIsToBeConverted) {
  const PixelBuffer picture = makePicture(5, 4, rgb8);
  const PixelRows rows(picture, {2, 1, 3, 2}, rgb8, ProfileSupport::none);
  EXPECT_EQ(rows.row(1, nullptr), picture.row(2) + 6);
  EXPECT_EQ(rows.wholePicture(), picture.row(1) + 6);
  EXPECT_EQ(rows.stride(), 15U);
}

TEST(PixelRows, cutsTheRegionOutOfAConvertedPicture) {
  const PixelBuffer picture = makePicture(5, 4, rgba8);
  const PixelRows rows(picture, {2, 1, 3, 2}, rgb8, ProfileSupport::none);
  EXPECT_EQ(rows.wholePicture(), nullptr);
  const PixelBuffer whole = converted(picture, rgb8);
  Bytes scratch(rows.scratchBytes());
  const std::uint8_t* const row = rows.row(1, scratch.data());
  EXPECT_TRUE(std::equal(row, row + 9, whole.row(2) + 6));
}

TEST(PixelRows, letThePictureGoWhenReleased) {
  auto picture = std::make_shared<const PixelBuffer>(makePicture(5, 4, rgb8));
  const std::weak_ptr<const PixelBuffer> observed = picture;
  PixelRows rows(std::move(picture), {0, 0, 5, 4}, rgb8, ProfileSupport::embedded);
  EXPECT_FALSE(observed.expired());
  rows.release();
  EXPECT_TRUE(observed.expired());
}

}  // namespace
}  // namespace kestrivane::imageTesting

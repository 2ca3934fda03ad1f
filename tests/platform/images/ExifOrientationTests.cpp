#include <gtest/gtest.h>

#include "platform/linux/images/ExifOrientation.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

constexpr Bytes::value_type any = 7;

/// EXIF data with one other entry and the orientation.
Bytes exifBlock(std::uint8_t orientation, bool bigEndian) {
  if (bigEndian)
    return {'E', 'x', 'i', 'f', 0, 0, 'M', 'M', 0, 42,          0, 0, 0, 8, 0, 2,
            1,   15,  0,   2,   0, 0, 0,   1,   0, 0,           0, 0,  //
            1,   18,  0,   3,   0, 0, 0,   1,   0, orientation, 0, 0, 0, 0, 0, 0};
  return {'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42,          0, 8, 0, 0, 0, 2, 0,
          15,  1,   2,   0,   1, 0, 0,   0,   0,           0, 0, 0,  //
          18,  1,   3,   0,   1, 0, 0,   0,   orientation, 0, 0, 0, 0, 0, 0, 0};
}

struct Place {
  std::size_t x;
  std::size_t y;
};

/// Where the stored pixel is in the upright picture, as the standard describes each value: which
/// edge of the upright picture the stored first row and first column are.
Place uprightPlace(int orientation, Place stored, std::size_t width, std::size_t height) {
  const std::size_t fromRight = width - 1 - stored.x;
  const std::size_t fromBottom = height - 1 - stored.y;
  switch (orientation) {
    case 2:
      return {fromRight, stored.y};
    case 3:
      return {fromRight, fromBottom};
    case 4:
      return {stored.x, fromBottom};
    case 5:
      return {stored.y, stored.x};
    case 6:
      return {fromBottom, stored.x};
    case 7:
      return {fromBottom, fromRight};
    case 8:
      return {stored.y, fromRight};
    default:
      return stored;
  }
}

TEST(ExifOrientation, isReadInBothByteOrdersWithAndWithoutItsPrefix) {
  for (const bool bigEndian : {false, true})
    for (std::uint8_t value = 1; value <= 8; ++value) {
      const Bytes block = exifBlock(value, bigEndian);
      EXPECT_EQ(exifOrientation(block), static_cast<Orientation>(value));
      EXPECT_EQ(exifOrientation(std::span(block).subspan(6)), static_cast<Orientation>(value));
    }
}

TEST(ExifOrientation, isTopLeftWhenTheValueIsUnknown) {
  EXPECT_EQ(exifOrientation(exifBlock(0, true)), Orientation::topLeft);
  EXPECT_EQ(exifOrientation(exifBlock(9, false)), Orientation::topLeft);
}

TEST(ExifOrientation, isTopLeftWhereverTheBlockIsCutBeforeTheValue) {
  const Bytes block = exifBlock(6, true);
  for (std::size_t size = 0; size < 38; ++size)
    EXPECT_EQ(exifOrientation(std::span(block).first(size)), Orientation::topLeft) << size;
}

TEST(ExifOrientation, isTopLeftWhenTheDirectoryLiesOutside) {
  Bytes block = exifBlock(6, true);
  block[10] = 0xFF;
  EXPECT_EQ(exifOrientation(block), Orientation::topLeft);
}

TEST(ExifOrientation, movesEveryPixelToItsPlaceForAllLayouts) {
  constexpr std::size_t width = 37;
  constexpr std::size_t height = 41;
  for (const Depth depth : {Depth::eight, Depth::sixteen})
    for (const Channels channels :
         {Channels::grey, Channels::greyAlpha, Channels::rgb, Channels::rgba})
      for (int value = 1; value <= 8; ++value) {
        const PixelLayout layout{channels, depth};
        const PixelBuffer stored = makePicture(width, height, layout);
        const PixelBuffer shown =
            upright(makePicture(width, height, layout), static_cast<Orientation>(value));
        ASSERT_EQ(shown.width(), value >= 5 ? height : width);
        ASSERT_EQ(shown.height(), value >= 5 ? width : height);
        const std::size_t bytes = layout.bytesPerPixel();
        for (std::size_t y = 0; y < height; ++y)
          for (std::size_t x = 0; x < width; ++x) {
            const Place place = uprightPlace(value, {x, y}, width, height);
            ASSERT_TRUE(std::equal(stored.row(y) + x * bytes, stored.row(y) + (x + 1) * bytes,
                                   shown.row(place.y) + place.x * bytes))
                << value << " at " << x << "," << y;
          }
      }
}

TEST(ExifOrientation, keepsTheProfile) {
  PixelBuffer stored = makePicture(3, 2, {Channels::rgb, Depth::eight});
  stored.iccProfile = {any};
  EXPECT_EQ(upright(std::move(stored), Orientation::rightTop).iccProfile, Bytes{any});
}

}  // namespace
}  // namespace kestrivane::imageTesting

#include <array>
#include <random>

#include <gtest/gtest.h>

#include "platform/linux/images/PngFilter.hpp"
#include "platform/linux/images/PngUnfilter.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::png {
namespace {

using imageTesting::Bytes;

constexpr std::array allFilters = {Filter::none, Filter::sub, Filter::up, Filter::average,
                                   Filter::paeth};

Bytes randomBytes(std::size_t count, unsigned spread, std::mt19937& random) {
  Bytes bytes(count);
  for (std::uint8_t& byte : bytes)
    byte = static_cast<std::uint8_t>(100 + random() % spread);
  return bytes;
}

/// Calls `function` with rows, and what is above them, of every size of pixel and many lengths.
template <typename Function>
void forEachKindOfRow(Function function) {
  std::mt19937 random(1);
  for (const std::size_t bytesPerPixel : {1U, 2U, 3U, 4U, 6U, 8U})
    for (const std::size_t width : {1U, 2U, 3U, 4U, 5U, 15U, 16U, 17U, 255U, 1001U})
      for (const unsigned spread : {4U, 40U, 256U}) {
        const Bytes bytes = randomBytes(width * bytesPerPixel, spread, random);
        const Bytes above = randomBytes(width * bytesPerPixel, spread, random);
        SCOPED_TRACE(testing::Message() << bytesPerPixel << " bytes, " << width << " pixels");
        function(bytes, above, bytesPerPixel);
      }
}

/// The buffer has exactly the row's size, so that what is written beyond it shows.
Bytes unfiltered(Unfilter unfilter, Filter filter, const Bytes& stored, const Bytes& above,
                 std::size_t bytesPerPixel) {
  Bytes result(stored.size());
  unfilter(filter, {stored, above.data(), bytesPerPixel}, result.data());
  return result;
}

TEST(PngUnfilter, undoesWhatTheFiltersDo) {
  forEachKindOfRow([](const Bytes& bytes, const Bytes& above, std::size_t bytesPerPixel) {
    for (const Filter filter : allFilters) {
      Bytes stored(bytes.size());
      portableFilterLoops.apply(filter, {bytes, above.data(), bytesPerPixel}, stored.data());
      EXPECT_EQ(unfiltered(unfilterPortably, filter, stored, above, bytesPerPixel), bytes);
      EXPECT_EQ(unfiltered(fastestUnfilter(), filter, stored, above, bytesPerPixel), bytes);
    }
  });
}

TEST(PngUnfilter, givesTheSameBytesWithAllLoopsWhateverIsStored) {
  forEachKindOfRow([](const Bytes& stored, const Bytes& above, std::size_t bytesPerPixel) {
    for (const Filter filter : allFilters)
      EXPECT_EQ(unfiltered(unfilterPortably, filter, stored, above, bytesPerPixel),
                unfiltered(fastestUnfilter(), filter, stored, above, bytesPerPixel));
  });
}

TEST(PngUnfilter, predictsEveryTripleOfNeighboursAlike) {
  // Pairs of pixels: the second one of each has the three neighbours, in every channel others.
  constexpr std::size_t channels = 4;
  for (int left = 0; left < 256; ++left)
    for (int above = 0; above < 256; ++above) {
      Bytes row;
      Bytes rowAbove;
      for (int corner = 0; corner < 256; ++corner) {
        row.push_back(static_cast<std::uint8_t>(left));
        rowAbove.push_back(static_cast<std::uint8_t>(corner));
        if (row.size() % channels > 0) continue;
        row.resize(row.size() + channels);
        rowAbove.resize(row.size(), static_cast<std::uint8_t>(above));
      }
      Bytes stored(row.size());
      portableFilterLoops.apply(Filter::paeth, {row, rowAbove.data(), channels}, stored.data());
      ASSERT_EQ(unfiltered(unfilterPortably, Filter::paeth, stored, rowAbove, channels), row);
      ASSERT_EQ(unfiltered(fastestUnfilter(), Filter::paeth, stored, rowAbove, channels), row);
    }
}

}  // namespace
}  // namespace kestrivane::png

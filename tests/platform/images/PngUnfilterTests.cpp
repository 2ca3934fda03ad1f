
#include <gtest/gtest.h>

#include "platform/linux/images/PngUnfilter.hpp"
#include "tests/platform/images/PngRows.hpp"

namespace kestrivane::png {
namespace {

using imageTesting::Bytes;

/// The buffer has exactly the row's size, so that what is written beyond it shows.
Bytes unfiltered(Unfilter unfilter, Filter filter, const StoredRow& stored) {
  Bytes result(stored.bytes.size());
  unfilter(filter, stored, result.data());
  return result;
}

TEST(PngUnfilter, undoesWhatTheFiltersDo) {
  forEachKindOfRow([](const FilterRow& row) {
    const Bytes bytes(row.bytes.begin(), row.bytes.end());
    for (const Filter filter : allFilters) {
      Bytes stored(bytes.size());
      portableFilterLoops.apply(filter, row, stored.data());
      const StoredRow storedRow{stored, row.above, row.bytesPerPixel};
      EXPECT_EQ(unfiltered(unfilterPortably, filter, storedRow), bytes);
      EXPECT_EQ(unfiltered(fastestUnfilter(), filter, storedRow), bytes);
    }
  });
}

TEST(PngUnfilter, givesTheSameBytesWithAllLoopsWhateverIsStored) {
  forEachKindOfRow([](const FilterRow& row) {
    const StoredRow stored{row.bytes, row.above, row.bytesPerPixel};
    for (const Filter filter : allFilters)
      EXPECT_EQ(unfiltered(unfilterPortably, filter, stored),
                unfiltered(fastestUnfilter(), filter, stored));
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
      const StoredRow storedRow{stored, rowAbove.data(), channels};
      ASSERT_EQ(unfiltered(unfilterPortably, Filter::paeth, storedRow), row);
      ASSERT_EQ(unfiltered(fastestUnfilter(), Filter::paeth, storedRow), row);
    }
}

}  // namespace
}  // namespace kestrivane::png

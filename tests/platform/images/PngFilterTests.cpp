#include <cstdlib>
#include <random>

#include <gtest/gtest.h>

#include "platform/linux/images/PngFilter.hpp"
#include "tests/platform/images/PngRows.hpp"

namespace kestrivane::png {
namespace {

using imageTesting::Bytes;

/// The prediction as the standard writes it down, in wide numbers.
int predicted(Filter filter, int left, int above, int corner) {
  switch (filter) {
    case Filter::none:
      return 0;
    case Filter::sub:
      return left;
    case Filter::up:
      return above;
    case Filter::average:
      return (left + above) / 2;
    default:
      break;
  }
  const int estimate = left + above - corner;
  const int fromLeft = std::abs(estimate - left);
  const int fromAbove = std::abs(estimate - above);
  const int fromCorner = std::abs(estimate - corner);
  if (fromLeft <= fromAbove && fromLeft <= fromCorner) return left;
  return fromAbove <= fromCorner ? above : corner;
}

Bytes filteredByTheBook(Filter filter, const FilterRow& row) {
  Bytes result(row.bytes.size());
  for (std::size_t i = 0; i < result.size(); ++i) {
    const bool first = i < row.bytesPerPixel;
    const int left = first ? 0 : row.bytes[i - row.bytesPerPixel];
    const int corner = first ? 0 : row.above[i - row.bytesPerPixel];
    result[i] =
        static_cast<std::uint8_t>(row.bytes[i] - predicted(filter, left, row.above[i], corner));
  }
  return result;
}

Bytes filtered(const FilterLoops& loops, Filter filter, const FilterRow& row) {
  Bytes result(row.bytes.size());
  loops.apply(filter, row, result.data());
  return result;
}

TEST(PngFilter, filtersAsTheStandardSays) {
  forEachKindOfRow([](const FilterRow& row) {
    for (const Filter filter : allFilters)
      EXPECT_EQ(filtered(portableFilterLoops, filter, row), filteredByTheBook(filter, row));
  });
}

TEST(PngFilter, givesTheSameBytesWithAllLoops) {
  forEachKindOfRow([](const FilterRow& row) {
    EXPECT_EQ(portableFilterLoops.best(row), fastestFilterLoops().best(row));
    for (const Filter filter : allFilters)
      EXPECT_EQ(filtered(portableFilterLoops, filter, row),
                filtered(fastestFilterLoops(), filter, row));
  });
}

TEST(PngFilter, predictsEveryTripleOfNeighboursAsTheStandardSays) {
  // Two pixels of one byte: the second one has the three neighbours.
  for (int left = 0; left < 256; ++left)
    for (int above = 0; above < 256; ++above) {
      Bytes row;
      Bytes rowAbove;
      for (int corner = 0; corner < 256; ++corner) {
        row.insert(row.end(), {static_cast<std::uint8_t>(left), 0});
        rowAbove.insert(rowAbove.end(),
                        {static_cast<std::uint8_t>(corner), static_cast<std::uint8_t>(above)});
      }
      const FilterRow pixels{row, rowAbove.data(), 1};
      ASSERT_EQ(filtered(fastestFilterLoops(), Filter::paeth, pixels),
                filteredByTheBook(Filter::paeth, pixels));
    }
}

TEST(PngFilter, choosesTheFilterThatPredictsARow) {
  const auto best = [](const Bytes& bytes, const Bytes& above) {
    return fastestFilterLoops().best({bytes, above.data(), 1});
  };
  Bytes ramp(100);
  for (std::size_t i = 0; i < ramp.size(); ++i)
    ramp[i] = static_cast<std::uint8_t>(2 * i);
  std::mt19937 random(1);
  const Bytes noise = randomBytes(100, 256, random);
  EXPECT_EQ(best(ramp, Bytes(100)), Filter::sub);
  EXPECT_EQ(best(noise, noise), Filter::up);
  EXPECT_EQ(best(Bytes(100), noise), Filter::none);
}

}  // namespace
}  // namespace kestrivane::png

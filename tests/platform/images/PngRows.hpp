// Rows of PNG files to filter, for the tests of both directions.
#pragma once

#include <array>
#include <cstddef>
#include <random>

#include <gtest/gtest.h>

#include "platform/linux/images/PngFilter.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::png {

inline constexpr std::array allFilters = {Filter::none, Filter::sub, Filter::up, Filter::average,
                                          Filter::paeth};

inline imageTesting::Bytes randomBytes(std::size_t count, unsigned spread, std::mt19937& random) {
  imageTesting::Bytes bytes(count);
  for (std::uint8_t& byte : bytes)
    byte = static_cast<std::uint8_t>(100 + random() % spread);
  return bytes;
}

/// Calls `function` with a `FilterRow` of every size of pixel and of many lengths.
template <typename Function>
void forEachKindOfRow(Function function) {
  std::mt19937 random(1);
  for (const std::size_t bytesPerPixel : {1U, 2U, 3U, 4U, 6U, 8U})
    for (const std::size_t width : {1U, 2U, 3U, 4U, 5U, 15U, 16U, 17U, 31U, 33U, 67U, 255U, 1001U})
      for (const unsigned spread : {4U, 40U, 256U}) {
        const auto bytes = randomBytes(width * bytesPerPixel, spread, random);
        const auto above = randomBytes(width * bytesPerPixel, spread, random);
        SCOPED_TRACE(testing::Message() << bytesPerPixel << " bytes, " << width << " pixels");
        function(FilterRow{bytes, above.data(), bytesPerPixel});
      }
}

}  // namespace kestrivane::png

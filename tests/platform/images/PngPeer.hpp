// libpng as an independent writer and reader of PNG files.
//
// Thread-safety: functions without state. Ownership: nothing is kept.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/linux/images/PngHeader.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {

/// What libpng is to write besides the pixels; empty for none.
struct PngExtras {
  Bytes palette;       ///< red, green, blue, one colour after the other
  Bytes transparency;  ///< of a palette's colours
  bool hasKey = false;
  std::uint16_t key = 0;  ///< of each channel: the transparent colour of grey and RGB
};

/// A file of random pixels, each row with another filter where that is permitted.
Bytes writtenByLibpng(const png::Header& header, const PngExtras& extras = {});

/// What libpng reads, expanded to 8 or 16 bits a channel.
PixelBuffer readByLibpng(std::span<const std::uint8_t> bytes);

}  // namespace kestrivane::imageTesting

// The orientation tag of EXIF (CIPA DC-008, tag 0x0112), read and applied to the pixels.
//
// Thread-safety: functions without state. Ownership: nothing is kept.
#pragma once

#include <cstdint>
#include <span>

#include "platform/linux/images/PixelBuffer.hpp"

namespace kestrivane {

/// Where the first row and the first column of the stored pixels are in the upright picture; the
/// values are those of the tag.
enum class Orientation : std::uint8_t {
  topLeft = 1,
  topRight = 2,
  bottomRight = 3,
  bottomLeft = 4,
  leftTop = 5,
  rightTop = 6,
  rightBottom = 7,
  leftBottom = 8,
};

/// `topLeft` for a value that is none of the eight.
Orientation orientationOfTag(std::uint32_t value);

/// The orientation in a block of EXIF data, with or without the "Exif\0\0" in front of it.
/// `topLeft` when the block has none or is damaged.
Orientation exifOrientation(std::span<const std::uint8_t> exif);

/// Turns and mirrors the stored pixels so that the picture is upright. Needs a second frame for a
/// quarter turn; `UprightRows`, for codecs that read row by row, does not.
PixelBuffer upright(PixelBuffer stored, Orientation orientation);

}  // namespace kestrivane

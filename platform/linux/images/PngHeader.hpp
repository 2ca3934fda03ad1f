// What the header of a PNG says (ISO/IEC 15948, 11.2.2).
//
// Thread-safety: a value. Ownership: nothing is kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kestrivane::png {

/// What a pixel consists of; the values are those of the file.
enum class ColorType : std::uint8_t { grey = 0, rgb = 2, palette = 3, greyAlpha = 4, rgba = 6 };

enum class Interlacing : std::uint8_t { none = 0, adam7 = 1 };

struct Header {
  std::size_t width = 0;
  std::size_t height = 0;
  std::size_t bitDepth = 0;  ///< 1, 2, 4, 8 or 16, as the colour type permits
  ColorType colorType = ColorType::grey;
  Interlacing interlacing = Interlacing::none;

  /// Reads the content of an IHDR chunk. Throws `ImageError` when it is not what the standard
  /// permits or when the picture is too large.
  static Header parse(std::span<const std::uint8_t> content);

  std::size_t bitsPerPixel() const;
  /// Bytes of a stored row of so many pixels, without the filter's byte.
  std::size_t rowBytes(std::size_t pixels) const { return (pixels * bitsPerPixel() + 7) / 8; }
};

}  // namespace kestrivane::png

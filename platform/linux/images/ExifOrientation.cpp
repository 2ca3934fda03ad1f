#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/ExifOrientation.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include "platform/linux/images/UprightRows.hpp"

namespace kestrivane {
namespace {

constexpr std::uint16_t orientationTag = 0x0112;
constexpr std::size_t entryBytes = 12;

/// Numbers of a TIFF structure, in the byte order that its header names.
class TiffNumbers {
 public:
  explicit TiffNumbers(std::span<const std::uint8_t> bytes)
      : bytes_(bytes), bigEndian_(!bytes.empty() && bytes[0] == 'M') {}

  std::optional<std::uint32_t> read(std::size_t offset, std::size_t count) const {
    if (offset > bytes_.size() || bytes_.size() - offset < count) return std::nullopt;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
      value = value << 8 | bytes_[offset + (bigEndian_ ? i : count - 1 - i)];
    return value;
  }

 private:
  std::span<const std::uint8_t> bytes_;
  bool bigEndian_;
};

}  // namespace

Orientation orientationOfTag(std::uint32_t value) {
  return value >= 1 && value <= 8 ? static_cast<Orientation>(value) : Orientation::topLeft;
}

Orientation exifOrientation(std::span<const std::uint8_t> exif) {
  constexpr std::array<std::uint8_t, 6> prefix = {'E', 'x', 'i', 'f', 0, 0};
  if (exif.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), exif.begin()))
    exif = exif.subspan(prefix.size());
  const TiffNumbers numbers(exif);
  const auto directory = numbers.read(4, 4);
  if (!directory) return Orientation::topLeft;
  const std::uint32_t entries = numbers.read(*directory, 2).value_or(0);
  for (std::uint32_t i = 0; i < entries; ++i) {
    const std::size_t entry = std::size_t{*directory} + 2 + i * entryBytes;
    const auto tag = numbers.read(entry, 2);
    if (!tag) break;
    if (*tag == orientationTag) return orientationOfTag(numbers.read(entry + 8, 2).value_or(0));
  }
  return Orientation::topLeft;
}

PixelBuffer upright(PixelBuffer stored, Orientation orientation) {
  using enum Orientation;
  const bool isReversed = orientation == topRight || orientation == bottomRight;
  const bool isUpsideDown = orientation == bottomRight || orientation == bottomLeft;
  if (orientation == topLeft || isReversed || isUpsideDown) {
    const std::size_t height = stored.height();
    for (std::size_t y = 0; isReversed && y < height; ++y)
      reversePixels(stored.row(y), stored.width(), stored.layout());
    for (std::size_t y = 0; isUpsideDown && y < height / 2; ++y)
      std::swap_ranges(stored.row(y), stored.row(y) + stored.rowBytes(),
                       stored.row(height - 1 - y));
    return stored;
  }
  UprightRows rows(stored.width(), stored.height(), stored.layout(), orientation);
  for (std::size_t y = 0; y < stored.height(); ++y, rows.advance())
    std::memcpy(rows.next(), stored.row(y), stored.rowBytes());
  PixelBuffer picture = rows.take();
  picture.iccProfile = std::move(stored.iccProfile);
  return picture;
}

}  // namespace kestrivane

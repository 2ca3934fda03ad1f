#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/ExifOrientation.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

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

void mirrorRows(PixelBuffer& picture) {
  const std::size_t bytes = picture.rowBytes();
  for (std::size_t y = 0; y < picture.height() / 2; ++y)
    std::swap_ranges(picture.row(y), picture.row(y) + bytes, picture.row(picture.height() - 1 - y));
}

template <std::size_t pixelBytes>
void mirrorColumns(PixelBuffer& picture) {
  using Pixel = std::array<std::uint8_t, pixelBytes>;
  for (std::size_t y = 0; y < picture.height(); ++y) {
    auto* const row = reinterpret_cast<Pixel*>(picture.row(y));
    std::reverse(row, row + picture.width());
  }
}

template <std::size_t pixelBytes>
PixelBuffer transposed(const PixelBuffer& picture) {
  using Pixel = std::array<std::uint8_t, pixelBytes>;
  PixelBuffer result = PixelBuffer::create(picture.height(), picture.width(), picture.layout());
  result.iccProfile = picture.iccProfile;
  constexpr std::size_t block = 32;  // rows of source and target that stay in the first-level cache
  for (std::size_t top = 0; top < picture.height(); top += block) {
    const std::size_t bottom = std::min(top + block, picture.height());
    for (std::size_t x = 0; x < picture.width(); ++x) {
      auto* const target = reinterpret_cast<Pixel*>(result.row(x));
      for (std::size_t y = top; y < bottom; ++y)
        target[y] = reinterpret_cast<const Pixel*>(picture.row(y))[x];
    }
  }
  return result;
}

template <std::size_t pixelBytes>
PixelBuffer uprightPixels(PixelBuffer picture, Orientation orientation) {
  const auto isOneOf = [orientation](auto... values) { return ((orientation == values) || ...); };
  using enum Orientation;
  if (isOneOf(leftTop, rightTop, rightBottom, leftBottom))
    picture = transposed<pixelBytes>(picture);
  if (isOneOf(topRight, bottomRight, rightTop, rightBottom)) mirrorColumns<pixelBytes>(picture);
  if (isOneOf(bottomRight, bottomLeft, rightBottom, leftBottom)) mirrorRows(picture);
  return picture;
}

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
  if (orientation == Orientation::topLeft) return stored;
  switch (stored.layout().bytesPerPixel()) {
    case 1:
      return uprightPixels<1>(std::move(stored), orientation);
    case 2:
      return uprightPixels<2>(std::move(stored), orientation);
    case 3:
      return uprightPixels<3>(std::move(stored), orientation);
    case 4:
      return uprightPixels<4>(std::move(stored), orientation);
    case 6:
      return uprightPixels<6>(std::move(stored), orientation);
    default:
      return uprightPixels<8>(std::move(stored), orientation);
  }
}

}  // namespace kestrivane

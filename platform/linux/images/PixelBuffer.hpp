// One decoded picture: upright, rows from the top, channels interleaved, tightly packed.
//
// Alpha is unassociated (colours are not multiplied by it). Channels of 16 bits are `std::uint16_t`
// in the machine's byte order, whatever the depth of the file was: 0 is none, 65535 is full.
// Thread-safety: none; a buffer that nobody changes may be read from any thread. Ownership: a
// buffer owns its pixels and moves; it is never copied.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "platform/linux/images/ImageError.hpp"

namespace kestrivane {

/// The channels of a pixel, in their order. The value is their number.
enum class Channels : std::uint8_t { grey = 1, greyAlpha = 2, rgb = 3, rgba = 4 };

/// The bits of one channel.
enum class Depth : std::uint8_t { eight = 8, sixteen = 16 };

struct PixelLayout {
  Channels channels = Channels::rgb;
  Depth depth = Depth::eight;

  constexpr std::size_t channelCount() const { return static_cast<std::size_t>(channels); }
  constexpr std::size_t bytesPerChannel() const { return depth == Depth::sixteen ? 2 : 1; }
  constexpr std::size_t bytesPerPixel() const { return channelCount() * bytesPerChannel(); }
  constexpr bool isGrey() const {
    return channels == Channels::grey || channels == Channels::greyAlpha;
  }
  constexpr bool hasAlpha() const {
    return channels == Channels::greyAlpha || channels == Channels::rgba;
  }
  constexpr PixelLayout withoutAlpha() const {
    return {isGrey() ? Channels::grey : Channels::rgb, depth};
  }

  friend constexpr bool operator==(const PixelLayout&, const PixelLayout&) = default;
};

/// A sixteen-bit channel as an eight-bit one, rounded to the nearest.
constexpr std::uint8_t toEightBits(std::uint32_t value) {
  return static_cast<std::uint8_t>((value * 255 + 32'895) >> 16);
}

class PixelBuffer {
 public:
  /// A picture whose pixels are not set yet. Throws `ImageError` when it is empty or too large (see
  /// `checkArea`), `std::bad_alloc` when there is no memory for it.
  static PixelBuffer create(std::size_t width, std::size_t height, PixelLayout layout) {
    checkArea(width, height);
    return {width, height, layout};
  }

  std::size_t width() const { return width_; }
  std::size_t height() const { return height_; }
  PixelLayout layout() const { return layout_; }
  /// Bytes from one row to the next.
  std::size_t rowBytes() const { return width_ * layout_.bytesPerPixel(); }
  std::size_t byteCount() const { return rowBytes() * height_; }

  std::uint8_t* row(std::size_t y) { return pixels_.get() + y * rowBytes(); }
  const std::uint8_t* row(std::size_t y) const { return pixels_.get() + y * rowBytes(); }

  /// The row of a picture of depth sixteen.
  std::uint16_t* row16(std::size_t y) { return reinterpret_cast<std::uint16_t*>(row(y)); }
  const std::uint16_t* row16(std::size_t y) const {
    return reinterpret_cast<const std::uint16_t*>(row(y));
  }

  /// The ICC profile (ISO 15076-1) of the colours; empty means sRGB.
  std::vector<std::uint8_t> iccProfile;

 private:
  PixelBuffer(std::size_t width, std::size_t height, PixelLayout layout)
      : width_(width), height_(height), layout_(layout), pixels_(allocate(byteCount())) {}

  struct Free {
    void operator()(std::uint8_t* pixels) const { std::free(pixels); }
  };
  using Pixels = std::unique_ptr<std::uint8_t[], Free>;
  static Pixels allocate(std::size_t bytes);

  std::size_t width_;
  std::size_t height_;
  PixelLayout layout_;
  Pixels pixels_;
};

}  // namespace kestrivane

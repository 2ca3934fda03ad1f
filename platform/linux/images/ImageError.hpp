// What a codec throws when a picture cannot be read or written, and the guard against pictures that
// are too large.
//
// It never leaves this folder: `LinuxImageIO` turns it into the null or false of its interface.
// Thread-safety: immutable values.
#pragma once

#include <cstdint>
#include <stdexcept>

namespace kestrivane {

class ImageError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The longest side in pixels: what JPEG and GIF can hold.
inline constexpr std::uint64_t maximumSide = 65'535;

/// The largest area in pixels. The largest sensors of cameras and telephones give 200 million; at
/// eight bytes a pixel a picture of this area takes 2 GiB.
#ifdef KESTRIVANE_MAXIMUM_AREA
inline constexpr std::uint64_t maximumArea = KESTRIVANE_MAXIMUM_AREA;  // less, for fuzzing
#else
inline constexpr std::uint64_t maximumArea = std::uint64_t{1} << 28;
#endif

/// Throws `ImageError` unless a picture of `width` x `height` pixels may be decoded. To be called
/// with the numbers of the header, before any memory is taken for pixels.
inline void checkArea(std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0) throw ImageError("the picture is empty");
  if (width > maximumSide || height > maximumSide || width * height > maximumArea)
    throw ImageError("the picture is too large");
}

}  // namespace kestrivane

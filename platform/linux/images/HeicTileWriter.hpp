// A part of a picture as a HEIC of its own, encoded by libheif with x265.
//
// Thread-safety: tiles may be encoded on several threads at once. Ownership: the picture is
// borrowed.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/images/PixelRows.hpp"

namespace kestrivane::heic {

/// The pixels of `region`, which lies inside `picture`; to the right and below they are repeated up
/// to `width` times `height`. Takes one thread. Throws `ImageError` when the library fails.
std::vector<std::uint8_t> encodeTile(const PixelRows& picture, PixelRegion region,
                                     std::size_t width, std::size_t height);

}  // namespace kestrivane::heic

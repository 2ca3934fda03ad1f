// Whether a zlib stream (RFC 1950) is whole, for readers that do not look at its end.
//
// Thread-safety: a function without state. Ownership: the input is borrowed.
#pragma once

#include <cstdint>

#include "platform/linux/images/ImageInput.hpp"

namespace kestrivane {

/// Reads the stream at `offset`, which ends within `size` bytes. Throws `ImageError` when it is
/// damaged, cut short, has another checksum than its bytes or stands for more than `limit` bytes.
void checkZlibStream(const ImageInput& input, std::uint64_t offset, std::uint64_t size,
                     std::uint64_t limit);

}  // namespace kestrivane

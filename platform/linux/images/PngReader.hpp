// Reads a PNG of any kind: its chunks in their order, its pixels while they are decompressed.
//
// Besides the picture it takes about two megabytes, and a second frame for pictures that are turned
// by a quarter and also interlaced, or say only at their end how they lie. Thread-safety: any
// number of calls at once; the thread of a call ends with it. Ownership: borrows the input.
#pragma once

#include "platform/linux/images/ImageInput.hpp"
#include "platform/linux/images/PixelBuffer.hpp"

namespace kestrivane::png {

/// Throws `ImageError` when the file is damaged anywhere up to its last chunk, or too large.
PixelBuffer read(const ImageInput& input);

}  // namespace kestrivane::png

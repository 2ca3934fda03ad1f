// The pixels of a PNG: one zlib stream (RFC 1950) in IDAT chunks, compressed strip by strip on all
// cores.
//
// Thread-safety: any number of calls at once. Ownership: borrows its arguments.
#pragma once

#include "platform/linux/images/ImageOutput.hpp"
#include "platform/linux/images/PixelRows.hpp"
#include "platform/linux/images/PngRowFilter.hpp"

namespace kestrivane::png {

/// Throws what goes wrong on any thread; errors of the file itself are left to
/// `ImageOutput::finish`.
void writeStrips(const PixelRows& picture, FilterChoice choice, ImageOutput& output);

}  // namespace kestrivane::png

// Writes a picture as PNG: rows are filtered and compressed in strips on all cores, and written in
// their order.
//
// Besides the picture it takes a few megabytes, however large the picture and however many the
// cores. Thread-safety: any number of calls at once; the threads of a call end with it. Ownership:
// borrows both arguments.
#pragma once

#include "platform/linux/images/ImageOutput.hpp"
#include "platform/linux/images/PixelRows.hpp"

namespace kestrivane::png {

/// Throws what goes wrong on any of the threads; errors of the file itself are left to
/// `ImageOutput::finish`.
void write(const PixelRows& picture, ImageOutput& output);

}  // namespace kestrivane::png

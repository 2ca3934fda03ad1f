// Reads the pixels of a device-independent bitmap, whose header has been read.
//
// Thread-safety: functions without state. Ownership: the picture is the caller's.
#pragma once

#include "platform/linux/images/DibHeader.hpp"
#include "platform/linux/images/ImageInput.hpp"
#include "platform/linux/images/PixelBuffer.hpp"

namespace kestrivane {

struct DibPixels {
  /// Grey when all colours of the palette are, of sixteen bits when a bit mask has more than eight.
  PixelBuffer picture;
  /// Whether any pixel has alpha above 0. A picture whose alpha is 0 everywhere was written by
  /// somebody who did not mean it, and is made opaque here.
  bool hasAlpha;
};

/// Throws `ImageError` when the pixels are cut short or damaged.
DibPixels readDibPixels(const ImageInput& input, const DibHeader& header);

}  // namespace kestrivane

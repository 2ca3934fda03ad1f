// How the stored picture of a HEIC is to be cut and turned (ISO/IEC 23008-12, 6.5.8 to 6.5.12).
//
// Thread-safety: functions without state. Ownership: nothing is kept.
#pragma once

#include <span>

#include "platform/linux/images/ExifOrientation.hpp"
#include "platform/linux/images/HeifFile.hpp"
#include "platform/linux/images/PixelRows.hpp"

namespace kestrivane::heic {

struct HeicTransform {
  /// Throws `ImageError` when the picture would be cut after it is turned, which the standard for
  /// such files (ISO/IEC 23000-22, 7.3.6.7) rules out, or to nothing.
  static HeicTransform read(std::span<const HeifProperty> properties, std::size_t width,
                            std::size_t height);

  PixelRegion shown;  ///< of the stored picture
  Orientation orientation = Orientation::topLeft;
};

}  // namespace kestrivane::heic

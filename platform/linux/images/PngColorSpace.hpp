// What a PNG says about its colours: a profile, that they are sRGB, or their numbers
// (ISO/IEC 15948, 11.3.3).
//
// Thread-safety: none. Ownership: owns what it has taken.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/linux/images/MadeProfile.hpp"
#include "platform/linux/images/PixelBuffer.hpp"

namespace kestrivane::png {

/// The exponent with which light becomes stored values, near enough to the curve of sRGB.
inline constexpr double sRGBExponent = 1 / 2.2;

class ColorSpace {
 public:
  /// Whether chunks of that type are for `take`.
  static bool concerns(std::string_view type);

  /// Takes the content of a chunk; a damaged one is ignored.
  void take(std::string_view type, std::span<const std::uint8_t> content);

  /// The ICC profile for pixels of `layout`: the file's own, if it is one for such pixels, or one
  /// made from its numbers; empty for sRGB.
  std::vector<std::uint8_t> profile(PixelLayout layout) const;

 private:
  std::vector<std::uint8_t> embedded_;
  bool isSRGB_ = false;
  double exponent_ = sRGBExponent;
  Chromaticities chromaticities_ = sRGBChromaticities;
};

}  // namespace kestrivane::png

// ICC profiles for files that describe their colours by numbers instead.
//
// Thread-safety: functions without state. Ownership: nothing is kept.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace kestrivane {

/// CIE 1931 x and y.
struct Chromaticity {
  double x = 0;
  double y = 0;
};

struct Chromaticities {
  Chromaticity white;
  Chromaticity red;
  Chromaticity green;
  Chromaticity blue;
};

/// The white and the primaries of sRGB (IEC 61966-2-1).
inline constexpr Chromaticities sRGBChromaticities{
    {0.3127, 0.3290}, {0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}};

/// How stored values become light.
struct TransferCurve {
  /// The exponent; 0 stands for the curve of sRGB.
  double gamma = 0;
};

/// Empty when the numbers describe no colour space.
std::vector<std::uint8_t> makeProfile(const Chromaticities& chromaticities, TransferCurve curve);

/// The same where red, green and blue have curves of their own.
std::vector<std::uint8_t> makeProfileOfCurves(const Chromaticities& chromaticities,
                                              const std::array<TransferCurve, 3>& curves);

/// For grey pictures.
std::vector<std::uint8_t> makeGreyProfile(TransferCurve curve);

}  // namespace kestrivane

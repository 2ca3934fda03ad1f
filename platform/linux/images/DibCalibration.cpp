#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/DibCalibration.hpp"

#include <cmath>

#include "platform/linux/images/LittleEndian.hpp"

namespace kestrivane {
namespace {

/// A colour of CIE 1931 XYZ.
struct Tristimulus {
  double x, y, z;
  double sum() const { return x + y + z; }
  Chromaticity chromaticity() const { return {x / sum(), y / sum()}; }
};

/// Three signed numbers with 30 bits after the point.
Tristimulus endpoint(const std::uint8_t* fields) {
  const auto number = [&](std::size_t index) {
    return static_cast<std::int32_t>(littleEndian::load32(fields + index * 4)) /
           static_cast<double>(1 << 30);
  };
  return {number(0), number(1), number(2)};
}

/// Of the usual range; a screen's is about 2. Some programs write the inverse.
std::optional<TransferCurve> curve(const std::uint8_t* field) {
  const double gamma = littleEndian::load32(field) / 65'536.0;
  if (!(gamma > 0.1 && gamma < 10)) return std::nullopt;
  return TransferCurve{gamma < 1 ? 1 / gamma : gamma};
}

}  // namespace

std::optional<DibCalibration> DibCalibration::read(std::span<const std::uint8_t, 48> fields) {
  const std::array<Tristimulus, 3> primaries = {endpoint(&fields[0]), endpoint(&fields[12]),
                                                endpoint(&fields[24])};
  bool areChromaticities = true;
  for (const Tristimulus& primary : primaries) {
    if (primary.sum() < 0.1 || primary.y <= 0) return std::nullopt;
    if (std::abs(primary.sum() - 1) > 0.01) areChromaticities = false;
  }
  DibCalibration result;
  result.chromaticities.red = primaries[0].chromaticity();
  result.chromaticities.green = primaries[1].chromaticity();
  result.chromaticities.blue = primaries[2].chromaticity();
  // Some programs write chromaticities, which say nothing about the white.
  const Tristimulus white = {primaries[0].x + primaries[1].x + primaries[2].x,
                             primaries[0].y + primaries[1].y + primaries[2].y,
                             primaries[0].z + primaries[1].z + primaries[2].z};
  result.chromaticities.white = areChromaticities ? sRGBChromaticities.white : white.chromaticity();
  for (std::size_t i = 0; i < result.curves.size(); ++i) {
    const std::optional<TransferCurve> read = curve(&fields[36 + i * 4]);
    if (!read) return std::nullopt;
    result.curves[i] = *read;
  }
  return result;
}

}  // namespace kestrivane

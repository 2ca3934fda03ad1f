#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/HeicProfile.hpp"

#include <optional>

#include "platform/linux/images/MadeProfile.hpp"

namespace kestrivane::heic {
namespace {

constexpr Chromaticity d65{0.3127, 0.3290};
constexpr Chromaticity illuminantC{0.310, 0.316};

/// ColourPrimaries (ITU-T H.273, table 2); nothing for sRGB and for numbers that say nothing.
std::optional<Chromaticities> chromaticitiesOf(int primaries) {
  switch (primaries) {
    case 4:
      return {{illuminantC, {0.67, 0.33}, {0.21, 0.71}, {0.14, 0.08}}};
    case 5:
      return {{d65, {0.64, 0.33}, {0.29, 0.60}, {0.15, 0.06}}};
    case 6:
    case 7:
      return {{d65, {0.630, 0.340}, {0.310, 0.595}, {0.155, 0.070}}};
    case 8:
      return {{illuminantC, {0.681, 0.319}, {0.243, 0.692}, {0.145, 0.049}}};
    case 9:
      return {{d65, {0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}}};
    case 11:
      return {{{0.314, 0.351}, {0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}}};
    case 12:
      return {{d65, {0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}}};
    case 22:
      return {{d65, {0.630, 0.340}, {0.295, 0.605}, {0.155, 0.077}}};
    default:
      return std::nullopt;
  }
}

}  // namespace

std::vector<std::uint8_t> profileOf(const CodedColors& numbers) {
  constexpr int linear = 8;
  const TransferCurve curve{numbers.transfer == linear ? 1.0 : 0.0};
  const auto chromaticities = chromaticitiesOf(numbers.primaries);
  if (!chromaticities && curve.gamma == 0) return {};
  return makeProfile(chromaticities.value_or(sRGBChromaticities), curve);
}

}  // namespace kestrivane::heic

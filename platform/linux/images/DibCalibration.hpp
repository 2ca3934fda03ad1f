// The colours of a bitmap whose header describes them by numbers instead of a profile
// (BITMAPV4HEADER of Windows GDI with a bV4CSType of LCS_CALIBRATED_RGB).
//
// Thread-safety: values and functions without state.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/linux/images/MadeProfile.hpp"

namespace kestrivane {

struct DibCalibration {
  Chromaticities chromaticities;
  std::array<TransferCurve, 3> curves;

  /// From the 48 bytes of bV4Endpoints and the gammas. Nothing when they describe no colours, as in
  /// files of programs that leave them zero.
  static std::optional<DibCalibration> read(std::span<const std::uint8_t, 48> fields);

  std::vector<std::uint8_t> profile() const { return makeProfileOfCurves(chromaticities, curves); }
};

}  // namespace kestrivane

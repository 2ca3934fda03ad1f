// Owners of the handles of lcms2. Thread-safety: none. Ownership: each closes what it holds.
#pragma once

#include <array>
#include <memory>

#include <lcms2.h>

namespace kestrivane {

struct LcmsProfileDeleter {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using LcmsProfile = std::unique_ptr<void, LcmsProfileDeleter>;

struct LcmsCurveDeleter {
  void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using LcmsCurve = std::unique_ptr<cmsToneCurve, LcmsCurveDeleter>;

/// The transfer curve of sRGB (IEC 61966-2-1).
inline LcmsCurve makeSRGBCurve() {
  constexpr std::array<cmsFloat64Number, 5> parameters = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92,
                                                          0.04045};
  return LcmsCurve(cmsBuildParametricToneCurve(nullptr, 4, parameters.data()));
}

}  // namespace kestrivane

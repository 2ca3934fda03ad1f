#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/MadeProfile.hpp"

#include <memory>

#include "platform/linux/images/LcmsHandles.hpp"

namespace kestrivane {
namespace {

cmsCIExyY toLcms(Chromaticity chromaticity) {
  return {chromaticity.x, chromaticity.y, 1};
}

LcmsCurve makeCurve(TransferCurve curve) {
  return curve.gamma > 0 ? LcmsCurve(cmsBuildGamma(nullptr, curve.gamma)) : makeSRGBCurve();
}

std::vector<std::uint8_t> bytesOf(const LcmsProfile& profile) {
  cmsUInt32Number size = 0;
  if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size)) return {};
  std::vector<std::uint8_t> bytes(size);
  if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size)) return {};
  return bytes;
}

}  // namespace

std::vector<std::uint8_t> makeProfile(const Chromaticities& chromaticities, TransferCurve curve) {
  const cmsCIExyY white = toLcms(chromaticities.white);
  const cmsCIExyYTRIPLE primaries = {toLcms(chromaticities.red), toLcms(chromaticities.green),
                                     toLcms(chromaticities.blue)};
  const LcmsCurve tone = makeCurve(curve);
  const std::array<cmsToneCurve*, 3> tones = {tone.get(), tone.get(), tone.get()};
  return bytesOf(LcmsProfile(cmsCreateRGBProfile(&white, &primaries, tones.data())));
}

std::vector<std::uint8_t> makeGreyProfile(TransferCurve curve) {
  return bytesOf(LcmsProfile(cmsCreateGrayProfile(cmsD50_xyY(), makeCurve(curve).get())));
}

}  // namespace kestrivane

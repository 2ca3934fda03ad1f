#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/MadeProfile.hpp"

#include <algorithm>
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
  // The time of creation (ICC.1, 7.2.8), which would make every file another one.
  std::fill_n(bytes.begin() + 24, 12, std::uint8_t{0});
  return bytes;
}

}  // namespace

std::vector<std::uint8_t> makeProfile(const Chromaticities& chromaticities, TransferCurve curve) {
  return makeProfileOfCurves(chromaticities, {curve, curve, curve});
}

std::vector<std::uint8_t> makeProfileOfCurves(const Chromaticities& chromaticities,
                                              const std::array<TransferCurve, 3>& curves) {
  const cmsCIExyY white = toLcms(chromaticities.white);
  const cmsCIExyYTRIPLE primaries = {toLcms(chromaticities.red), toLcms(chromaticities.green),
                                     toLcms(chromaticities.blue)};
  const std::array<LcmsCurve, 3> owners = {makeCurve(curves[0]), makeCurve(curves[1]),
                                           makeCurve(curves[2])};
  const std::array<cmsToneCurve*, 3> tones = {owners[0].get(), owners[1].get(), owners[2].get()};
  return bytesOf(LcmsProfile(cmsCreateRGBProfile(&white, &primaries, tones.data())));
}

std::vector<std::uint8_t> makeGreyProfile(TransferCurve curve) {
  return bytesOf(LcmsProfile(cmsCreateGrayProfile(cmsD50_xyY(), makeCurve(curve).get())));
}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/ColorTransform.hpp"

#include <algorithm>
#include <array>
#include <vector>

#include "platform/linux/images/LcmsHandles.hpp"

namespace kestrivane {
namespace {

LcmsProfile openProfile(std::span<const std::uint8_t> bytes) {
  return LcmsProfile(
      cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
}

/// The grey axis of sRGB.
LcmsProfile makeGreySRGB() {
  return LcmsProfile(cmsCreateGrayProfile(cmsD50_xyY(), makeSRGBCurve().get()));
}

cmsUInt32Number formatOf(PixelLayout layout) {
  const std::uint32_t colors = layout.isGrey() ? PT_GRAY : PT_RGB;
  return COLORSPACE_SH(colors) | CHANNELS_SH(layout.isGrey() ? 1U : 3U) |
         EXTRA_SH(layout.hasAlpha() ? 1U : 0U) |
         BYTES_SH(static_cast<std::uint32_t>(layout.bytesPerChannel()));
}

void* makeTransform(const LcmsProfile& from, cmsUInt32Number fromFormat, const LcmsProfile& to,
                    cmsUInt32Number toFormat, cmsUInt32Number flags) {
  if (!from || !to) return nullptr;
  // Without the cache a transform may be shared between threads.
  return cmsCreateTransform(from.get(), fromFormat, to.get(), toFormat,
                            INTENT_RELATIVE_COLORIMETRIC, flags | cmsFLAGS_NOCACHE);
}

/// Whether `transform` leaves colours of `layout` as they are, but for rounding.
bool isIdentity(const ColorTransform& transform, PixelLayout layout) {
  constexpr std::array<std::uint8_t, 6> levels = {0, 51, 102, 153, 204, 255};
  const std::size_t step = layout.bytesPerPixel();
  std::vector<std::uint8_t> before;
  for (const std::uint8_t red : levels)
    for (const std::uint8_t green : levels)
      for (const std::uint8_t blue : levels) {
        const std::array<std::uint8_t, 4> color = {red, green, blue, 255};
        for (std::size_t byte = 0; byte < step; ++byte)
          before.push_back(color[byte / layout.bytesPerChannel()]);
      }
  std::vector<std::uint8_t> after(before.size());
  transform.convert(before.data(), after.data(), before.size() / step);
  if (layout.depth == Depth::eight)
    return std::ranges::equal(
        before, after, [](int left, int right) { return left - right <= 1 && right - left <= 1; });
  const auto* left = reinterpret_cast<const std::uint16_t*>(before.data());
  const auto* right = reinterpret_cast<const std::uint16_t*>(after.data());
  return std::equal(left, left + before.size() / 2, right,
                    [](int one, int other) { return one - other <= 256 && other - one <= 256; });
}

}  // namespace

ProfileKind kindOfProfile(std::span<const std::uint8_t> profile) {
  const LcmsProfile opened = openProfile(profile);
  if (!opened) return ProfileKind::unusable;
  switch (cmsGetColorSpace(opened.get())) {
    case cmsSigGrayData:
      return ProfileKind::grey;
    case cmsSigRgbData:
      return ProfileKind::rgb;
    case cmsSigCmykData:
      return ProfileKind::cmyk;
    default:
      return ProfileKind::unusable;
  }
}

bool profileFits(std::span<const std::uint8_t> profile, PixelLayout layout) {
  return kindOfProfile(profile) == (layout.isGrey() ? ProfileKind::grey : ProfileKind::rgb);
}

std::optional<ColorTransform> ColorTransform::toSRGB(std::span<const std::uint8_t> profile,
                                                     PixelLayout layout) {
  if (!profileFits(profile, layout)) return std::nullopt;
  const LcmsProfile target(layout.isGrey() ? makeGreySRGB() : LcmsProfile(cmsCreate_sRGBProfile()));
  void* const transform = makeTransform(openProfile(profile), formatOf(layout), target,
                                        formatOf(layout), cmsFLAGS_COPY_ALPHA);
  if (transform == nullptr) return std::nullopt;
  ColorTransform result(transform);
  if (isIdentity(result, layout)) return std::nullopt;
  return result;
}

std::optional<ColorTransform> ColorTransform::cmykToSRGB(std::span<const std::uint8_t> profile,
                                                         Depth depth, InkPolarity polarity) {
  if (kindOfProfile(profile) != ProfileKind::cmyk) return std::nullopt;
  const PixelLayout layout{Channels::rgb, depth};
  const cmsUInt32Number inks = COLORSPACE_SH(PT_CMYK) | CHANNELS_SH(4U) |
                               FLAVOR_SH(polarity == InkPolarity::zeroIsFull ? 1U : 0U) |
                               BYTES_SH(static_cast<std::uint32_t>(layout.bytesPerChannel()));
  void* const transform = makeTransform(openProfile(profile), inks,
                                        LcmsProfile(cmsCreate_sRGBProfile()), formatOf(layout), 0);
  if (transform == nullptr) return std::nullopt;
  return ColorTransform(transform);
}

void ColorTransform::convert(const std::uint8_t* source, std::uint8_t* target,
                             std::size_t pixels) const {
  cmsDoTransform(transform_.get(), source, target, static_cast<cmsUInt32Number>(pixels));
}

void ColorTransform::Deleter::operator()(void* transform) const {
  cmsDeleteTransform(transform);
}

}  // namespace kestrivane

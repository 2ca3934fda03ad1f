#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngColorSpace.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "platform/linux/images/ColorTransform.hpp"
#include "platform/linux/images/PngChunk.hpp"
#include "platform/linux/images/PngInflater.hpp"

namespace kestrivane::png {
namespace {

using Bytes = std::span<const std::uint8_t>;

/// Far more than any profile for screens and cameras has.
constexpr std::size_t maximumProfileBytes = 8'000'000;

bool isNear(double left, double right, double tolerance) {
  return std::abs(left - right) <= tolerance;
}

bool areNear(const Chromaticities& left, const Chromaticities& right) {
  constexpr double tolerance = 0.002;
  const auto near = [](Chromaticity a, Chromaticity b) {
    return isNear(a.x, b.x, tolerance) && isNear(a.y, b.y, tolerance);
  };
  return near(left.white, right.white) && near(left.red, right.red) &&
         near(left.green, right.green) && near(left.blue, right.blue);
}

/// The number at that place in a chunk, which holds it in hundred thousandths.
double numberAt(Bytes content, std::size_t index) {
  return fromBigEndian(content.subspan(index * 4).first<4>()) / 100'000.0;
}

Chromaticity chromaticityAt(Bytes content, std::size_t index) {
  return {numberAt(content, index * 2), numberAt(content, index * 2 + 1)};
}

/// The profile of an iCCP chunk, which follows a name and the number of the one compression method.
std::vector<std::uint8_t> inflatedProfile(Bytes content) {
  constexpr std::size_t headerBytes = 128;
  const auto name = std::ranges::find(content, 0);
  if (content.end() - name < 2 || name[1] != 0) return {};
  Bytes compressed(name + 2, content.end());
  Inflater inflater([&] { return std::exchange(compressed, {}); });
  std::vector<std::uint8_t> profile(headerBytes);
  if (inflater.readUpTo(profile) < headerBytes) return {};
  const std::uint32_t size = fromBigEndian(Bytes(profile).first<4>());
  if (size < headerBytes || size > maximumProfileBytes) return {};
  profile.resize(size);
  if (inflater.readUpTo(std::span(profile).subspan(headerBytes)) < size - headerBytes) return {};
  return profile;
}

}  // namespace

bool ColorSpace::concerns(std::string_view type) {
  return type == "iCCP" || type == "sRGB" || type == "gAMA" || type == "cHRM";
}

void ColorSpace::take(std::string_view type, Bytes content) {
  if (type == "iCCP") {
    try {
      embedded_ = inflatedProfile(content);
    } catch (const ImageError&) {
      embedded_.clear();
    }
  }
  if (type == "sRGB") isSRGB_ = content.size() == 1;
  if (type == "gAMA" && content.size() == 4) exponent_ = numberAt(content, 0);
  if (type == "cHRM" && content.size() == 32)
    chromaticities_ = {chromaticityAt(content, 0), chromaticityAt(content, 1),
                       chromaticityAt(content, 2), chromaticityAt(content, 3)};
}

std::vector<std::uint8_t> ColorSpace::profile(PixelLayout layout) const {
  if (profileFits(embedded_, layout)) return embedded_;
  if (isSRGB_) return {};
  // Exponents that no picture is made with are errors of its maker.
  const bool isUsual = isNear(exponent_, sRGBExponent, 0.005) || exponent_ < 0.1 || exponent_ > 10;
  const TransferCurve curve{isUsual ? 0 : 1 / exponent_};
  if (layout.isGrey()) return isUsual ? std::vector<std::uint8_t>() : makeGreyProfile(curve);
  if (isUsual && areNear(chromaticities_, sRGBChromaticities)) return {};
  return makeProfile(chromaticities_, curve);
}

}  // namespace kestrivane::png

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/HeicTransform.hpp"

#include <cmath>
#include <tuple>
#include <utility>

namespace kestrivane::heic {
namespace {

/// Any turn is: rows become columns or not, then left and right change places or not, then top and
/// bottom.
struct Turn {
  bool isTransposed = false;
  bool isMirroredAcross = false;
  bool isMirroredDown = false;

  void quarterLeft() {
    isTransposed = !isTransposed;
    std::swap(isMirroredAcross, isMirroredDown);
    isMirroredDown = !isMirroredDown;
  }

  Orientation orientation() const {
    using enum Orientation;
    if (isTransposed)
      return isMirroredAcross ? (isMirroredDown ? rightBottom : rightTop)
                              : (isMirroredDown ? leftBottom : leftTop);
    return isMirroredAcross ? (isMirroredDown ? bottomRight : topRight)
                            : (isMirroredDown ? bottomLeft : topLeft);
  }
};

/// A number of thirty-two bits over another one; offsets have a sign.
double takeFraction(HeifBytes& bytes) {
  const auto above = static_cast<std::int32_t>(bytes.u32());
  const std::uint32_t below = bytes.u32();
  if (below == 0) throw ImageError("the HEIC's clean aperture divides by nothing");
  return static_cast<double>(above) / below;
}

/// Of `whole` pixels those of a piece whose middle is `offset` pixels from theirs.
std::pair<std::size_t, std::size_t> piece(std::size_t whole, double size, double offset) {
  const double count = std::floor(size);
  const double first = std::round((static_cast<double>(whole) - count) / 2 + offset);
  if (count < 1 || first < 0 || first + count > static_cast<double>(whole))
    throw ImageError("the HEIC's clean aperture is outside of the picture");
  return {static_cast<std::size_t>(first), static_cast<std::size_t>(count)};
}

PixelRegion readCleanAperture(HeifBytes bytes, const PixelRegion& from) {
  const double width = takeFraction(bytes);
  const double height = takeFraction(bytes);
  const double across = takeFraction(bytes);
  const double down = takeFraction(bytes);
  PixelRegion region;
  std::tie(region.x, region.width) = piece(from.width, width, across);
  std::tie(region.y, region.height) = piece(from.height, height, down);
  return {from.x + region.x, from.y + region.y, region.width, region.height};
}

}  // namespace

HeicTransform HeicTransform::read(std::span<const HeifProperty> properties, std::size_t width,
                                  std::size_t height) {
  HeicTransform transform;
  transform.shown = {0, 0, width, height};
  Turn turn;
  bool isTurned = false;
  for (const HeifProperty& property : properties) {
    HeifBytes bytes(property.body);
    if (property.type == fourCC("irot")) {
      for (int quarters = bytes.u8() & 3; quarters > 0; --quarters)
        turn.quarterLeft();
      isTurned = true;
    } else if (property.type == fourCC("imir")) {
      bool& mirrored = (bytes.u8() & 1) != 0 ? turn.isMirroredAcross : turn.isMirroredDown;
      mirrored = !mirrored;
      isTurned = true;
    } else if (property.type == fourCC("clap")) {
      if (isTurned) throw ImageError("the HEIC's picture is cut after it is turned");
      transform.shown = readCleanAperture(bytes, transform.shown);
    }
  }
  transform.orientation = turn.orientation();
  return transform;
}

}  // namespace kestrivane::heic

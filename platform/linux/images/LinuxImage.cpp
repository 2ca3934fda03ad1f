#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/LinuxImage.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kestrivane {
namespace {

template <typename Channel>
bool isOpaqueRow(const std::uint8_t* row, std::size_t pixels, std::size_t channels) {
  const auto* alpha = reinterpret_cast<const Channel*>(row) + channels - 1;
  for (std::size_t i = 0; i < pixels; ++i)
    if (alpha[i * channels] != std::numeric_limits<Channel>::max()) return false;
  return true;
}

/// `value` as a coordinate between 0 and `limit`; 0 for what is no number.
std::size_t clamped(double value, std::size_t limit) {
  return value > 0 ? static_cast<std::size_t>(std::min(value, static_cast<double>(limit))) : 0;
}

}  // namespace

LinuxImage::LinuxImage(PixelBuffer picture) : region_{0, 0, picture.width(), picture.height()} {
  picture_ = std::make_shared<const PixelBuffer>(std::move(picture));
}

std::shared_ptr<const Image> LinuxImage::cropping(const Rect& rect) const {
  const std::size_t left = clamped(std::floor(rect.x), width());
  const std::size_t top = clamped(std::floor(rect.y), height());
  const std::size_t right = clamped(std::ceil(rect.x + rect.width), width());
  const std::size_t bottom = clamped(std::ceil(rect.y + rect.height), height());
  if (right <= left || bottom <= top) return nullptr;
  return std::make_shared<LinuxImage>(
      picture_, PixelRegion{region_.x + left, region_.y + top, right - left, bottom - top});
}

PixelLayout LinuxImage::effectiveLayout() const {
  const PixelLayout layout = picture_->layout();
  if (!layout.hasAlpha()) return layout;
  const PixelRows all = rows(layout, ProfileSupport::embedded);
  for (std::size_t y = 0; y < height(); ++y) {
    const std::uint8_t* const row = all.row(y, nullptr);
    const bool opaque = layout.depth == Depth::eight
                            ? isOpaqueRow<std::uint8_t>(row, width(), layout.channelCount())
                            : isOpaqueRow<std::uint16_t>(row, width(), layout.channelCount());
    if (!opaque) return layout;
  }
  return layout.withoutAlpha();
}

}  // namespace kestrivane

// A decoded picture, or a part of one.
//
// Thread-safety: immutable. Ownership: the parts of a picture share its pixels.
#pragma once

#include <memory>

#include "platform/ImageIO.hpp"
#include "platform/linux/images/PixelBuffer.hpp"
#include "platform/linux/images/PixelRows.hpp"

namespace kestrivane {

class LinuxImage final : public Image {
 public:
  explicit LinuxImage(PixelBuffer picture);
  LinuxImage(std::shared_ptr<const PixelBuffer> picture, PixelRegion region)
      : picture_(std::move(picture)), region_(region) {}

  std::size_t width() const override { return region_.width; }
  std::size_t height() const override { return region_.height; }
  std::shared_ptr<const Image> cropping(const Rect& rect) const override;

  /// The layout of the pixels, without alpha when all of them are opaque.
  PixelLayout effectiveLayout() const;

  /// The pixels in `layout`; shares them with this image.
  PixelRows rows(PixelLayout layout, ProfileSupport profileSupport) const {
    return {picture_, region_, layout, profileSupport};
  }

 private:
  std::shared_ptr<const PixelBuffer> picture_;
  PixelRegion region_;
};

}  // namespace kestrivane

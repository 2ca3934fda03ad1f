// A picture of the system.
//
// Thread-safety: immutable. Ownership: owns a reference to the system's picture; the parts of a
// picture share its pixels.
#pragma once

#include <memory>

#include <CoreGraphics/CoreGraphics.h>

#include "platform/ImageIO.hpp"
#include "platform/macos/CFReference.hpp"

namespace kestrivane {

class MacImage final : public Image {
 public:
  /// Null for null.
  static std::shared_ptr<const Image> create(CFReference<CGImageRef> image);

  std::size_t width() const override { return CGImageGetWidth(get()); }
  std::size_t height() const override { return CGImageGetHeight(get()); }
  std::shared_ptr<const Image> cropping(const Rect& rect) const override;

  /// Lent: lives as long as this object.
  CGImageRef get() const { return image_.get(); }

 private:
  explicit MacImage(CFReference<CGImageRef> image) : image_(std::move(image)) {}

  CFReference<CGImageRef> image_;
};

}  // namespace kestrivane

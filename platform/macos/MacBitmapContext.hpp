// A canvas of the system on which pictures are drawn to scale.
//
// Thread-safety: one thread at a time. Ownership: owns the system's context, which owns its pixels;
// `makeImage` copies them.
#pragma once

#include <memory>

#include <CoreGraphics/CoreGraphics.h>

#include "platform/ImageIO.hpp"
#include "platform/macos/CFReference.hpp"

namespace kestrivane {

class MacBitmapContext final : public BitmapContext {
 public:
  /// Null when the system makes none.
  static std::unique_ptr<BitmapContext> create(std::size_t width, std::size_t height,
                                               std::size_t bitsPerComponent, BitmapInfo info);

  void setInterpolationQuality(InterpolationQuality quality) override;
  void draw(const Image& image, const Rect& rect) override;
  std::shared_ptr<const Image> makeImage() override;

 private:
  MacBitmapContext(CFReference<CGContextRef> context, std::size_t height)
      : context_(std::move(context)), height_(static_cast<CGFloat>(height)) {}

  CFReference<CGContextRef> context_;
  CGFloat height_;
};

}  // namespace kestrivane

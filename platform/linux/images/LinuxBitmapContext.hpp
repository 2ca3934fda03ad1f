// A canvas of device-RGB pixels (sRGB here) on which pictures are drawn to scale.
//
// Thread-safety: one thread at a time. Ownership: owns its pixels; `makeImage` copies them.
#pragma once

#include <vector>

#include "platform/ImageIO.hpp"

namespace kestrivane {

class LinuxBitmapContext final : public BitmapContext {
 public:
  /// Throws `ImageError` when the canvas is empty or too large, `std::bad_alloc` without memory.
  LinuxBitmapContext(std::size_t width, std::size_t height);

  void setInterpolationQuality(InterpolationQuality quality) override { quality_ = quality; }
  void draw(const Image& image, const Rect& rect) override;
  std::shared_ptr<const Image> makeImage() override;

 private:
  void compose(const std::vector<float>& drawn);

  std::size_t width_;
  std::size_t height_;
  InterpolationQuality quality_ = InterpolationQuality::standard;
  std::vector<float> pixels_;  // red, green, blue, alpha; colours multiplied by alpha; 0 to 1
  bool failed_ = false;
};

}  // namespace kestrivane

// Rows of CMYK, as JPEG and TIFF files hold them, turned into sRGB.
//
// Through the file's profile when it has one for CMYK, else by the plain formula: each colour is
// what its ink and black leave of white. Thread-safety: `convert` may be called from several
// threads at once. Ownership: owns its transform.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>

#include "platform/linux/images/ColorTransform.hpp"

namespace kestrivane {

class CmykConversion {
 public:
  CmykConversion(std::span<const std::uint8_t> profile, Depth depth, InkPolarity polarity)
      : transform_(ColorTransform::cmykToSRGB(profile, depth, polarity)),
        depth_(depth),
        polarity_(polarity) {}

  /// From four channels a pixel to three, all of the depth given at construction.
  void convert(const std::uint8_t* inks, std::uint8_t* target, std::size_t pixels) const {
    if (transform_) {
      transform_->convert(inks, target, pixels);
    } else if (depth_ == Depth::eight) {
      convertPlainly(inks, target, pixels);
    } else {
      convertPlainly(reinterpret_cast<const std::uint16_t*>(inks),
                     reinterpret_cast<std::uint16_t*>(target), pixels);
    }
  }

 private:
  template <typename Channel>
  void convertPlainly(const Channel* inks, Channel* target, std::size_t pixels) const {
    constexpr std::uint64_t white = std::numeric_limits<Channel>::max();
    const auto whiteLeft = [this](Channel ink) -> std::uint64_t {
      return polarity_ == InkPolarity::zeroIsFull ? ink : white - ink;
    };
    for (std::size_t i = 0; i < pixels; ++i, inks += 4, target += 3)
      for (std::size_t c = 0; c < 3; ++c)
        target[c] =
            static_cast<Channel>((whiteLeft(inks[c]) * whiteLeft(inks[3]) + white / 2) / white);
  }

  std::optional<ColorTransform> transform_;
  Depth depth_;
  InkPolarity polarity_;
};

}  // namespace kestrivane

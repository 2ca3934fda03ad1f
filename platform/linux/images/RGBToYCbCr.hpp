// Red, green and blue turned into brightness and colour difference (ITU-T H.273, 8.3).
//
// Thread-safety: a converter is immutable. Ownership: rows are borrowed.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace kestrivane {

/// To full range with the weights of ITU-R BT.601, in samples of `bits` bits. `Number` is that of
/// channels and samples alike: `std::uint8_t` for eight bits, `std::uint16_t` for more.
template <typename Number>
class RGBToYCbCr {
 public:
  explicit RGBToYCbCr(int bits) : grey_(1 << (bits - 1)), largest_((1 << bits) - 1) {
    const double scale = static_cast<double>(largest_) / std::numeric_limits<Number>::max();
    constexpr double red = 0.299;
    constexpr double blue = 0.114;
    constexpr double green = 1 - red - blue;
    y_ = rounded({red, green, blue}, scale);
    cb_ = rounded({-red, -green, 1 - blue}, scale / 2 / (1 - blue));
    cr_ = rounded({1 - red, -green, -blue}, scale / 2 / (1 - red));
  }

  /// The brightness of `pixels` pixels of `channels` numbers each.
  void brightness(const Number* source, std::size_t channels, std::size_t pixels,
                  Number* target) const {
    for (std::size_t x = 0; x < pixels; ++x, source += channels)
      target[x] = clamped(dot(y_, source[0], source[1], source[2]), 0);
  }

  /// The mean colour differences of each two by two pixels of two rows, which may be one and the
  /// same; the last column of an odd width counts twice.
  void halvedDifferences(const Number* upper, const Number* lower, std::size_t channels,
                         std::size_t pixels, Number* cb, Number* cr) const {
    for (std::size_t x = 0; x < pixels; x += 2) {
      const std::size_t left = x * channels;
      const std::size_t right = x + 1 < pixels ? left + channels : left;
      Weights mean{};
      for (std::size_t c = 0; c < 3; ++c)
        mean[c] = (upper[left + c] + upper[right + c] + lower[left + c] + lower[right + c] + 2) / 4;
      cb[x / 2] = clamped(dot(cb_, mean[0], mean[1], mean[2]), grey_);
      cr[x / 2] = clamped(dot(cr_, mean[0], mean[1], mean[2]), grey_);
    }
  }

 private:
  // Fixed-point numbers, wide enough for the sum of three products.
  using Fixed = std::conditional_t<sizeof(Number) == 1, std::int32_t, std::int64_t>;
  using Weights = std::array<Fixed, 3>;
  static constexpr int fractionBits = sizeof(Number) == 1 ? 16 : 24;
  static constexpr Fixed oneHalf = Fixed{1} << (fractionBits - 1);

  static Fixed toFixed(double value) {
    return static_cast<Fixed>(std::lround(value * (1 << fractionBits)));
  }

  static Weights rounded(const std::array<double, 3>& weights, double scale) {
    return {toFixed(weights[0] * scale), toFixed(weights[1] * scale), toFixed(weights[2] * scale)};
  }

  static Fixed dot(const Weights& weights, Fixed red, Fixed green, Fixed blue) {
    return weights[0] * red + weights[1] * green + weights[2] * blue;
  }

  Number clamped(Fixed value, Fixed offset) const {
    return static_cast<Number>(
        std::clamp(((value + oneHalf) >> fractionBits) + offset, Fixed{0}, largest_));
  }

  Fixed grey_;
  Fixed largest_;
  Weights y_, cb_, cr_;
};

}  // namespace kestrivane

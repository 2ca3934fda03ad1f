// Colours of one ICC profile turned into others, over lcms2.
//
// Thread-safety: `convert` may be called from several threads at once. Ownership: owns its
// transform; the profiles are read at construction only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "platform/linux/images/PixelBuffer.hpp"

namespace kestrivane {

/// What an ICC profile describes the colours of.
enum class ProfileKind { unusable, grey, rgb, cmyk };

/// `unusable` for bytes that are no profile, and for profiles of other colour spaces.
ProfileKind kindOfProfile(std::span<const std::uint8_t> profile);

/// Whether colours of `layout` can be described by `profile`.
bool profileFits(std::span<const std::uint8_t> profile, PixelLayout layout);

/// How ink is counted in a file.
enum class InkPolarity { zeroIsNone, zeroIsFull };

class ColorTransform {
 public:
  /// From the colours of `profile` to sRGB, in the same layout: grey stays grey, alpha stays as it
  /// is. Nothing when the profile does not fit the layout, or when its colours are sRGB already.
  static std::optional<ColorTransform> toSRGB(std::span<const std::uint8_t> profile,
                                              PixelLayout layout);

  /// From CMYK (four channels) to sRGB without alpha, both of `depth`. Nothing when `profile` is
  /// not one for CMYK.
  static std::optional<ColorTransform> cmykToSRGB(std::span<const std::uint8_t> profile,
                                                  Depth depth, InkPolarity polarity);

  /// `target` may be `source` where both have as many channels.
  void convert(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels) const;

 private:
  struct Deleter {
    void operator()(void* transform) const;
  };

  explicit ColorTransform(void* transform) : transform_(transform) {}

  std::unique_ptr<void, Deleter> transform_;
};

}  // namespace kestrivane

// The rows of a picture, or of a part of it, as an encoder wants them: converted to its layout and
// colours one row at a time, or in place where nothing is to be converted.
//
// Deeper channels are rounded to the nearest, missing ones are made, alpha that the target lacks is
// laid over white. Colours are never made grey. Thread-safety: rows may be made on several threads
// at once, each with its own scratch. Ownership: shares the picture, or borrows one that outlives
// it; owns the colour transform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "platform/linux/images/ColorTransform.hpp"
#include "platform/linux/images/PixelBuffer.hpp"

namespace kestrivane {

/// Whether a format's files can carry an ICC profile that its readers look at.
enum class ProfileSupport : bool { none, embedded };

/// A rectangle of whole pixels inside a picture.
struct PixelRegion {
  std::size_t x = 0;
  std::size_t y = 0;
  std::size_t width = 0;
  std::size_t height = 0;
};

class PixelRows {
 public:
  /// `region` of `source` in `layout`. The colours keep their profile if `profileSupport` says so
  /// and the profile is one for pixels of `layout`; else they become sRGB.
  PixelRows(std::shared_ptr<const PixelBuffer> source, PixelRegion region, PixelLayout layout,
            ProfileSupport profileSupport);

  /// The same of a borrowed picture.
  PixelRows(const PixelBuffer& source, PixelRegion region, PixelLayout layout,
            ProfileSupport profileSupport)
      : PixelRows(std::shared_ptr<const PixelBuffer>(std::shared_ptr<void>(), &source), region,
                  layout, profileSupport) {}

  /// The whole of a borrowed picture as it stands.
  explicit PixelRows(const PixelBuffer& source)
      : PixelRows(source, {0, 0, source.width(), source.height()}, source.layout(),
                  ProfileSupport::embedded) {}

  std::size_t width() const { return region_.width; }
  std::size_t height() const { return region_.height; }
  PixelLayout layout() const { return layout_; }
  std::size_t rowBytes() const { return width() * layout_.bytesPerPixel(); }

  /// The profile to embed; empty means sRGB.
  std::span<const std::uint8_t> iccProfile() const;

  /// Row `y`, of `rowBytes()` bytes: inside the picture itself, or made in `scratch`, which has
  /// room for `scratchBytes()`.
  const std::uint8_t* row(std::size_t y, std::uint8_t* scratch) const;
  std::size_t scratchBytes() const;

  /// The first row of the whole region if its rows lie in memory as they are to be, `stride()`
  /// bytes apart; null when rows have to be converted. For libraries that take a picture at once.
  const std::uint8_t* wholePicture() const;
  std::size_t stride() const { return source_->rowBytes(); }

  /// Gives up the picture, whose memory is free again when nobody else holds it. Rows and profile
  /// must not be asked for afterwards.
  void release() { source_.reset(); }

 private:
  std::shared_ptr<const PixelBuffer> source_;
  PixelRegion region_;
  PixelLayout layout_;
  bool keepsProfile_;
  std::optional<ColorTransform> toSRGB_;
  void (*convert_)(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels) = nullptr;
};

}  // namespace kestrivane

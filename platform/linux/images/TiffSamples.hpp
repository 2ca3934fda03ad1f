// The samples of a TIFF's pixels turned into rows of a `PixelBuffer`.
//
// Thread-safety: none. Ownership: a `RowMaker` owns its scratch; the colour map belongs to the
// file's handle, which outlives it.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include <tiffio.h>

#include "platform/linux/images/Cmyk.hpp"
#include "platform/linux/images/PixelBuffer.hpp"

namespace kestrivane::tiff {

/// What the tags say about a pixel's samples; the values are those of the tags.
struct Format {
  std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  std::uint16_t bits = 1;  ///< of one sample
  std::uint16_t sampleFormat = SAMPLEFORMAT_UINT;
  std::uint16_t samples = 1;  ///< of one pixel
  std::uint16_t planes = 1;   ///< 1, or `samples` when each has a plane of its own
  std::uint16_t inkSet = INKSET_CMYK;
  std::uint16_t firstExtra = EXTRASAMPLE_UNSPECIFIED;
  bool hasColorMap = false;
  std::array<const std::uint16_t*, 3> colorMap{};  ///< red, green, blue: 2 to the `bits` each
};

/// Whether `RowMaker` knows the format.
bool isReadDirectly(const Format& format);

/// The layout of rows of that format: at most eight bits are eight, more are sixteen.
PixelLayout layoutOf(const Format& format);

class RowMaker {
 public:
  /// `profile` is the file's; used for CMYK only.
  RowMaker(const Format& format, std::span<const std::uint8_t> profile);

  /// Makes `pixels` pixels at `target`. The row of the first plane starts at `row`, those of the
  /// others `planeBytes` later each.
  void make(const std::uint8_t* row, std::size_t planeBytes, std::size_t pixels,
            std::uint8_t* target);

 private:
  void unpack(const std::uint8_t* row, std::size_t planeBytes, std::size_t pixels);
  void makeColors(std::size_t pixels);

  Format format_;
  PixelLayout layout_;
  CmykConversion cmyk_;
  unsigned mapScale_ = 1;
  std::vector<std::uint16_t>
      samples_;                        // of one row, interleaved; full is 65535, of an index itself
  std::vector<std::uint16_t> colors_;  // of one row, in the layout's channels
};

}  // namespace kestrivane::tiff

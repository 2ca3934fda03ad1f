// Collects the rows of a picture as it is stored and puts each in its place in the upright picture.
//
// Turned pictures need no second frame: rows that become columns wait until there are enough of
// them to be written a few cache lines at a time. Thread-safety: none. Ownership: owns the picture
// until it is taken.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/linux/images/ExifOrientation.hpp"
#include "platform/linux/images/PixelBuffer.hpp"

namespace kestrivane {

/// Mirrors a row from left to right.
void reversePixels(std::uint8_t* row, std::size_t pixels, PixelLayout layout);

class UprightRows {
 public:
  /// For `height` rows of `width` pixels, as stored. Throws as `PixelBuffer::create` does.
  UprightRows(std::size_t width, std::size_t height, PixelLayout layout, Orientation orientation);

  /// Where the next row is to be stored; the same place until `advance` is called.
  std::uint8_t* next();
  /// The next row is stored.
  void advance();

  /// The upright picture; all rows have been stored.
  PixelBuffer take() { return std::move(picture_); }

 private:
  void placeColumns(std::size_t count);

  std::size_t width_;
  std::size_t height_;
  Orientation orientation_;
  PixelBuffer picture_;
  std::vector<std::uint8_t> waiting_;  // the latest rows, of those that become columns
  std::size_t done_ = 0;
};

}  // namespace kestrivane

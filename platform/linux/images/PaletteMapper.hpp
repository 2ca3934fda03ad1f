// Turns the pixels of a picture into places in its palette, row by row from the top.
//
// When the palette is not exact, three quarters of what a pixel is off by go to its neighbours that
// are still to come (Floyd and Steinberg, 1976); all of it would give more grain than it hides.
// Thread-safety: none. Ownership: borrows the palette.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/linux/images/Palette.hpp"

namespace kestrivane {

class PaletteMapper {
 public:
  /// For rows of `width` pixels in RGB, or in RGBA if the palette has an entry for transparency.
  PaletteMapper(const Palette& palette, std::size_t width);

  /// Maps the next row; `indices` has room for its pixels.
  void mapRow(const std::uint8_t* pixels, std::span<std::uint8_t> indices);

 private:
  /// What pixels are off by, in 64ths.
  using Error = std::array<std::int32_t, 3>;

  bool isTransparent(const std::uint8_t* pixel) const;
  std::uint8_t nearest(int red, int green, int blue);
  std::uint8_t search(int red, int green, int blue) const;
  void mapExactly(const std::uint8_t* pixels, std::span<std::uint8_t> indices);
  void mapSpreadingErrors(const std::uint8_t* pixels, std::span<std::uint8_t> indices);

  const Palette& palette_;
  PaletteColours colours_;  // of the palette, to be found quickly
  const std::size_t channels_;
  /// The colours channel by channel, so that several are compared at a time.
  std::array<std::array<std::int32_t, PaletteColours::maximumSize>, 3> planes_{};
  /// The place of the colour nearest to a small cube of colours; `unknown` until it is asked for.
  std::vector<std::int16_t> cubes_;
  std::vector<Error> errors_;      // of the row to be mapped, with a margin of one at both ends
  std::vector<Error> nextErrors_;  // of the one below
  bool leftwards_ = false;
};

}  // namespace kestrivane

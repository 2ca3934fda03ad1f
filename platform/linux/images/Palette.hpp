// At most 256 colours that stand for those of a picture.
//
// Exact when the picture has no more, otherwise chosen from a sample of its pixels. Pixels whose
// alpha is below one half have no colour; one entry stands for all of them. Thread-safety:
// immutable once made. Ownership: owns its colours.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/images/PaletteColours.hpp"
#include "platform/linux/images/PixelRows.hpp"

namespace kestrivane {

struct Palette {
  /// Alpha from here on counts as opaque.
  static constexpr std::uint8_t opaqueAlpha = 128;

  std::vector<PaletteColour> colours;
  /// The place, among `colours`, of the entry for transparent pixels. Pictures without alpha have
  /// none.
  std::optional<std::uint8_t> transparentIndex;
  /// Whether every colour of the picture is among `colours`.
  bool isExact = false;

  /// The palette of a picture in RGB or RGBA of eight bits. Throws `ImageError` when none can be
  /// made.
  static Palette of(const PixelRows& picture);
};

}  // namespace kestrivane

// The pixels of a PNG's rows as a `PixelBuffer` holds them: palettes and depths below eight bits
// are expanded, the one transparent colour that grey and RGB pictures can have becomes alpha,
// channels of 16 bits get the machine's byte order (ISO/IEC 15948, 11.2.3 and 11.3.2).
//
// Thread-safety: none. Ownership: owns its tables.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/linux/images/PixelBuffer.hpp"
#include "platform/linux/images/PngHeader.hpp"

namespace kestrivane::png {

class Expander {
 public:
  explicit Expander(const Header& header);

  /// Takes the content of a PLTE chunk. Throws `ImageError` when it is damaged or the second one.
  void setPalette(std::span<const std::uint8_t> content);
  bool lacksPalette() const { return header_.colorType == ColorType::palette && colorCount_ == 0; }

  /// Takes the content of a tRNS chunk; one that does not fit the picture is ignored.
  void setTransparency(std::span<const std::uint8_t> content);

  /// Of the expanded pixels. Palette and transparency have been taken.
  PixelLayout layout() const;

  /// Writes so many pixels of a stored row to `target`, which has room for them in `layout()`.
  void expand(const std::uint8_t* row, std::size_t pixels, std::uint8_t* target) const;

 private:
  using Color = std::array<std::uint8_t, 4>;  // red, green, blue, alpha

  bool usesTable() const;
  template <std::size_t channels>
  void lookUp(const std::uint8_t* row, std::size_t pixels, std::uint8_t* target) const;

  Header header_;
  std::size_t colorCount_ = 0;    // of the palette
  std::array<Color, 256> table_;  // what the values of palettes and of grey to 8 bits stand for
  bool hasTransparency_ = false;
  std::array<std::uint8_t, 6>
      key_{};  // the transparent colour of deeper grey and of RGB, as stored
};

}  // namespace kestrivane::png

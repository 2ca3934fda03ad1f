// The header of a device-independent bitmap: what stands in a BMP file after the file header, and
// in an icon at the start of a picture.
//
// The kinds of Windows (BITMAPINFOHEADER to BITMAPV5HEADER, see the Windows GDI documentation) and
// those of OS/2 that are stored in the same way. Thread-safety: values and functions without state.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/images/DibCalibration.hpp"
#include "platform/linux/images/ImageInput.hpp"

namespace kestrivane {

enum class DibCompression { none, runLength8, runLength4 };

/// Whether pixels of 32 bits without bit masks have alpha in their fourth byte: they do in icons,
/// and in bitmaps the byte is unused.
enum class FourthByte : bool { unused, alpha };

struct DibHeader {
  struct Colour {
    std::uint8_t red, green, blue;
    bool isGrey() const { return red == green && green == blue; }
  };
  struct Range {
    std::uint64_t offset, size;
  };

  /// Pixels, as stored: in an icon the height of colours and mask together.
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  bool topDown = false;
  unsigned bitsPerPixel = 0;  ///< 1, 2, 4, 8, 16, 24 or 32
  DibCompression compression = DibCompression::none;
  /// The bits of red, green, blue and alpha in a pixel of 16 or 32 bits; each is one run of bits.
  std::array<std::uint32_t, 4> masks{};
  /// At most 2^`bitsPerPixel` colours; empty above 8 bits.
  std::vector<Colour> palette;
  /// Where the pixels are.
  std::uint64_t pixelOffset = 0;
  /// Where the ICC profile is; its size is 0 when there is none.
  Range profile{};
  /// What the header has instead of a profile.
  std::optional<DibCalibration> calibration;

  /// Whether the colours are others than those of sRGB.
  bool hasProfile() const { return profile.size > 0 || calibration; }

  /// Bytes of a stored row without compression: rows end at a multiple of four.
  std::uint64_t storedRowBytes() const {
    return (std::uint64_t{width} * bitsPerPixel + 31) / 32 * 4;
  }

  /// Reads the header at `offset`. The pixels are at `pixelOffset`, or after the palette if it is
  /// 0. Throws `ImageError` when the header is cut short, contradicts itself or is of an unknown
  /// kind.
  static DibHeader read(const ImageInput& input, std::uint64_t offset, std::uint64_t pixelOffset,
                        FourthByte fourthByte);
};

}  // namespace kestrivane

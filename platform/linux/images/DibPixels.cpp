#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/DibPixels.hpp"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

#include "platform/linux/images/ImageError.hpp"
#include "platform/linux/images/LittleEndian.hpp"
#include "platform/linux/images/SequentialReader.hpp"

namespace kestrivane {
namespace {

/// The place in the picture of the row that is stored as number `line`.
std::size_t rowOfLine(const DibHeader& header, std::size_t line) {
  return header.topDown ? line : header.height - 1 - line;
}

/// Calls `convert(stored row, y)` for each row.
template <typename Convert>
void forEachStoredRow(const ImageInput& input, const DibHeader& header, Convert convert) {
  std::vector<std::uint8_t> stored(header.storedRowBytes());
  for (std::size_t line = 0; line < header.height; ++line) {
    input.readAt(header.pixelOffset + line * stored.size(), stored);
    convert(stored.data(), rowOfLine(header, line));
  }
}

/// Refuses a header that promises more than the file has, before memory is taken for it.
void checkStoredSize(const ImageInput& input, const DibHeader& header) {
  const std::uint64_t needed = header.storedRowBytes() * header.height;
  if (input.size() < header.pixelOffset || input.size() - header.pixelOffset < needed)
    throw ImageError("the bitmap is cut short");
}

/// Colours by their number in the palette.
class PaletteRows {
 public:
  explicit PaletteRows(const DibHeader& header)
      : palette_(header.palette),
        bits_(header.bitsPerPixel),
        picture_(
            PixelBuffer::create(header.width, header.height,
                                {isGrey(header) ? Channels::grey : Channels::rgb, Depth::eight})) {}

  /// Numbers of `bits_` each, the first in the highest bits.
  void putPacked(const std::uint8_t* packed, std::size_t y) {
    const unsigned perByte = 8 / bits_;
    const unsigned mask = (1u << bits_) - 1;
    put(y, [=, this](std::size_t x) {
      const auto place = static_cast<unsigned>(x % perByte);
      return unsigned{packed[x / perByte]} >> (8 - bits_ * (place + 1)) & mask;
    });
  }

  /// One number in each byte.
  void putBytes(const std::uint8_t* numbers, std::size_t y) {
    put(y, [=](std::size_t x) { return numbers[x]; });
  }

  PixelBuffer take() { return std::move(picture_); }

 private:
  /// A profile describes red, green and blue, so with one the picture stays a coloured one.
  static bool isGrey(const DibHeader& header) {
    return !header.hasProfile() && std::ranges::all_of(header.palette, &DibHeader::Colour::isGrey);
  }

  template <typename NumberAt>
  void put(std::size_t y, NumberAt numberAt) {
    std::uint8_t* target = picture_.row(y);
    const bool grey = picture_.layout().isGrey();
    for (std::size_t x = 0; x < picture_.width(); ++x) {
      const std::size_t number = numberAt(x);
      if (number >= palette_.size()) throw ImageError("a colour that the palette does not have");
      const DibHeader::Colour colour = palette_[number];
      *target++ = colour.red;
      if (grey) continue;
      *target++ = colour.green;
      *target++ = colour.blue;
    }
  }

  const std::vector<DibHeader::Colour>& palette_;
  const unsigned bits_;
  PixelBuffer picture_;
};

/// Reads runs of equal numbers, and numbers as they stand (Windows GDI, "Bitmap Compression"). What
/// the file jumps over has number 0.
class RunLengthReader {
 public:
  RunLengthReader(const ImageInput& input, const DibHeader& header, PaletteRows& rows)
      : bytes_(input, header.pixelOffset),
        header_(header),
        rows_(rows),
        line_(header.storedRowBytes() * 8 / header.bitsPerPixel) {}

  void read() {
    for (;;) {
      const std::size_t count = bytes_.byte();
      const std::uint8_t value = bytes_.byte();
      if (count > 0)
        putRun(count, value);
      else if (value == endOfLine)
        finishLine();
      else if (value == endOfBitmap)
        break;
      else if (value == jump)
        skip();
      else
        putStored(value);
    }
    while (lines_ < header_.height)
      finishLine();
  }

 private:
  static constexpr std::uint8_t endOfLine = 0;
  static constexpr std::uint8_t endOfBitmap = 1;
  static constexpr std::uint8_t jump = 2;

  void put(std::uint8_t number) {
    if (x_ >= line_.size() || lines_ >= header_.height)
      throw ImageError("pixels outside the bitmap");
    line_[x_++] = number;
  }

  /// The number at an even or an odd place among those that `byte` holds.
  std::uint8_t part(std::uint8_t byte, std::size_t place) const {
    if (header_.compression == DibCompression::runLength8) return byte;
    return static_cast<std::uint8_t>(place % 2 == 0 ? byte >> 4 : byte & 0x0F);
  }

  void putRun(std::size_t count, std::uint8_t value) {
    for (std::size_t i = 0; i < count; ++i)
      put(part(value, i));
  }

  void putStored(std::size_t count) {
    const std::size_t perByte = header_.compression == DibCompression::runLength8 ? 1 : 2;
    const std::size_t byteCount = (count + perByte - 1) / perByte;
    std::uint8_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
      if (i % perByte == 0) value = bytes_.byte();
      put(part(value, i));
    }
    if (byteCount % 2 != 0) bytes_.byte();
  }

  void skip() {
    const std::size_t right = bytes_.byte();
    const std::size_t up = bytes_.byte();
    const std::size_t x = x_ + right;
    if (x > line_.size()) throw ImageError("pixels outside the bitmap");
    for (std::size_t i = 0; i < up; ++i)
      finishLine();
    x_ = x;
  }

  void finishLine() {
    if (lines_ >= header_.height) throw ImageError("pixels outside the bitmap");
    rows_.putBytes(line_.data(), header_.height - 1 - lines_);
    std::ranges::fill(line_, std::uint8_t{0});
    ++lines_;
    x_ = 0;
  }

  SequentialReader bytes_;
  const DibHeader& header_;
  PaletteRows& rows_;
  /// A row, and the fill behind it that some programs store as if it were pixels.
  std::vector<std::uint8_t> line_;
  std::size_t x_ = 0;
  std::size_t lines_ = 0;  // that are finished, from the bottom
};

DibPixels readPalettePixels(const ImageInput& input, const DibHeader& header) {
  if (header.compression == DibCompression::none) checkStoredSize(input, header);
  PaletteRows rows(header);
  if (header.compression != DibCompression::none)
    RunLengthReader(input, header, rows).read();
  else if (header.bitsPerPixel == 8)
    forEachStoredRow(input, header, [&](const auto* stored, auto y) { rows.putBytes(stored, y); });
  else
    forEachStoredRow(input, header, [&](const auto* stored, auto y) { rows.putPacked(stored, y); });
  return {rows.take(), false};
}

DibPixels readTrueColour(const ImageInput& input, const DibHeader& header) {
  auto picture = PixelBuffer::create(header.width, header.height, {Channels::rgb, Depth::eight});
  forEachStoredRow(input, header, [&](const std::uint8_t* stored, std::size_t y) {
    std::uint8_t* target = picture.row(y);
    for (std::size_t x = 0; x < header.width; ++x, stored += 3, target += 3) {
      target[0] = stored[2];
      target[1] = stored[1];
      target[2] = stored[0];
    }
  });
  return {std::move(picture), false};
}

/// The values of one channel, whatever its mask, brought to the range of `Sample`.
template <typename Sample>
class MaskedChannel {
 public:
  explicit MaskedChannel(std::uint32_t mask) {
    // More bits than a table has room for are no gain.
    const int surplus = std::max(0, std::popcount(mask) - 16);
    shift_ = mask == 0 ? 0 : std::countr_zero(mask) + surplus;
    last_ = mask >> shift_;
    values_.resize(last_ + std::size_t{1});
    constexpr std::uint64_t full = std::numeric_limits<Sample>::max();
    for (std::uint64_t bits = 1; bits <= last_; ++bits)
      values_[bits] = static_cast<Sample>((bits * full + last_ / 2) / last_);
  }

  Sample operator()(std::uint32_t pixel) const { return values_[(pixel >> shift_) & last_]; }

 private:
  int shift_ = 0;
  std::uint32_t last_ = 0;
  std::vector<Sample> values_;
};

template <typename Sample>
DibPixels readMaskedPixels(const ImageInput& input, const DibHeader& header) {
  const MaskedChannel<Sample> red(header.masks[0]), green(header.masks[1]), blue(header.masks[2]),
      alpha(header.masks[3]);
  const std::uint32_t alphaMask = header.masks[3];
  const std::size_t channels = alphaMask != 0 ? 4 : 3;
  auto picture = PixelBuffer::create(header.width, header.height,
                                     {alphaMask != 0 ? Channels::rgba : Channels::rgb,
                                      sizeof(Sample) == 1 ? Depth::eight : Depth::sixteen});
  const auto rowOf = [&](std::size_t y) { return reinterpret_cast<Sample*>(picture.row(y)); };

  std::uint32_t used = 0;
  const bool wide = header.bitsPerPixel == 32;
  forEachStoredRow(input, header, [&](const std::uint8_t* stored, std::size_t y) {
    Sample* target = rowOf(y);
    for (std::size_t x = 0; x < header.width; ++x, target += channels) {
      const std::uint32_t pixel =
          wide ? littleEndian::load32(stored + x * 4) : littleEndian::load16(stored + x * 2);
      used |= pixel;
      target[0] = red(pixel);
      target[1] = green(pixel);
      target[2] = blue(pixel);
      if (channels == 4) target[3] = alpha(pixel);
    }
  });

  const bool hasAlpha = (used & alphaMask) != 0;
  if (channels == 4 && !hasAlpha) {
    for (std::size_t y = 0; y < header.height; ++y)
      for (std::size_t x = 0; x < header.width; ++x)
        rowOf(y)[x * 4 + 3] = std::numeric_limits<Sample>::max();
  }
  return {std::move(picture), hasAlpha};
}

}  // namespace

DibPixels readDibPixels(const ImageInput& input, const DibHeader& header) {
  if (header.bitsPerPixel <= 8) return readPalettePixels(input, header);
  checkStoredSize(input, header);
  if (header.bitsPerPixel == 24) return readTrueColour(input, header);
  const bool deep =
      std::ranges::any_of(header.masks, [](auto mask) { return std::popcount(mask) > 8; });
  return deep ? readMaskedPixels<std::uint16_t>(input, header)
              : readMaskedPixels<std::uint8_t>(input, header);
}

}  // namespace kestrivane

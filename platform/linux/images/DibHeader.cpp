#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/DibHeader.hpp"

#include <algorithm>
#include <bit>
#include <span>

#include "platform/linux/images/ImageError.hpp"
#include "platform/linux/images/LittleEndian.hpp"

namespace kestrivane {
namespace {

using littleEndian::load16;
using littleEndian::load32;

// The sizes of the headers, which tell them apart.
constexpr std::uint32_t coreSize = 12;        // BITMAPCOREHEADER, OS/2 1.x
constexpr std::uint32_t shortOS2Size = 16;    // OS/2 2.x, the least of it
constexpr std::uint32_t infoSize = 40;        // BITMAPINFOHEADER
constexpr std::uint32_t colourMaskSize = 52;  // with masks for the colours
constexpr std::uint32_t alphaMaskSize = 56;   // and for alpha
constexpr std::uint32_t os2Size = 64;         // OS/2 2.x, all of it
constexpr std::uint32_t version4Size = 108;   // BITMAPV4HEADER
constexpr std::uint32_t version5Size = 124;   // BITMAPV5HEADER

// Values of the field biCompression.
constexpr std::uint32_t storedPlain = 0;
constexpr std::uint32_t storedRunLength8 = 1;
constexpr std::uint32_t storedRunLength4 = 2;
constexpr std::uint32_t storedBitFields = 3;
constexpr std::uint32_t storedAlphaBitFields = 6;

// Values of the field bV4CSType, which is bV5CSType.
constexpr std::uint32_t colorsCalibrated = 0;
constexpr std::uint32_t profileEmbedded = 0x4D424544;  // 'MBED'

bool isKnownSize(std::uint32_t size) {
  constexpr std::array known{coreSize,      shortOS2Size, infoSize,     colourMaskSize,
                             alphaMaskSize, os2Size,      version4Size, version5Size};
  return std::ranges::find(known, size) != known.end();
}

bool isOneRunOfBits(std::uint32_t mask) {
  return mask == 0 || std::has_single_bit((std::uint64_t{mask} >> std::countr_zero(mask)) + 1);
}

/// Reads the parts of a header one after the other.
class Parser {
 public:
  Parser(const ImageInput& input, std::uint64_t offset) : input_(input), start_(offset) {
    input_.readAt(start_, std::span(fields_).first(4));
    size_ = load32(fields_.data());
    if (!isKnownSize(size_)) throw ImageError("a bitmap header of unknown size");
    input_.readAt(start_, std::span(fields_).first(size_));
    end_ = start_ + size_;
  }

  DibHeader parse(std::uint64_t pixelOffset, FourthByte fourthByte) {
    DibHeader header;
    readSize(header);
    readCompression(header);
    readMasks(header, fourthByte);
    readPalette(header, pixelOffset);
    readProfile(header);
    if (pixelOffset != 0 && pixelOffset < end_) throw ImageError("pixels inside a bitmap header");
    header.pixelOffset = pixelOffset != 0 ? pixelOffset : end_;
    return header;
  }

 private:
  /// A field of four bytes; 0 when the header is too short to have it.
  std::uint32_t field(std::size_t at) const { return load32(fields_.data() + at); }

  void readSize(DibHeader& header) {
    if (size_ == coreSize) {
      header.width = load16(fields_.data() + 4);
      header.height = load16(fields_.data() + 6);
      header.bitsPerPixel = load16(fields_.data() + 10);
    } else {
      const auto height = static_cast<std::int32_t>(field(8));
      header.width = field(4);
      header.topDown = height < 0;
      header.height = header.topDown ? 0 - field(8) : field(8);
      header.bitsPerPixel = load16(fields_.data() + 14);
    }
    checkArea(header.width, header.height);
  }

  void readCompression(DibHeader& header) {
    constexpr std::array depths{1u, 2u, 4u, 8u, 16u, 24u, 32u};
    const unsigned bits = header.bitsPerPixel;
    const bool known = std::ranges::find(depths, bits) != depths.end();
    compression_ = size_ == coreSize ? storedPlain : field(16);
    const bool hasBitFields = size_ != os2Size && (compression_ == storedBitFields ||
                                                   compression_ == storedAlphaBitFields);
    if (compression_ == storedRunLength8 && bits == 8 && !header.topDown)
      header.compression = DibCompression::runLength8;
    else if (compression_ == storedRunLength4 && bits == 4 && !header.topDown)
      header.compression = DibCompression::runLength4;
    else if (!known ||
             !(compression_ == storedPlain || (hasBitFields && (bits == 16 || bits == 32))))
      throw ImageError("a bitmap of unknown kind");
  }

  void readMasks(DibHeader& header, FourthByte fourthByte) {
    if (header.bitsPerPixel != 16 && header.bitsPerPixel != 32) return;
    if (compression_ == storedPlain) {
      if (header.bitsPerPixel == 16) header.masks = {0x7C00, 0x03E0, 0x001F, 0};
      if (header.bitsPerPixel == 32) header.masks = {0xFF0000, 0x00FF00, 0x0000FF, 0};
      if (header.bitsPerPixel == 32 && fourthByte == FourthByte::alpha)
        header.masks[3] = 0xFF000000;
      return;
    }
    // In a plain header the masks follow it, in the later ones they are fields of it.
    if (size_ <= infoSize) {
      const std::size_t count = compression_ == storedAlphaBitFields ? 4 : 3;
      input_.readAt(end_, std::span(fields_).subspan(infoSize, count * 4));
      end_ += count * 4;
    }
    for (std::size_t i = 0; i < header.masks.size(); ++i)
      header.masks[i] = field(infoSize + i * 4);
    const std::uint64_t limit = std::uint64_t{1} << header.bitsPerPixel;
    for (const std::uint32_t mask : header.masks)
      if (mask >= limit || !isOneRunOfBits(mask)) throw ImageError("a strange bit mask");
  }

  void readPalette(DibHeader& header, std::uint64_t pixelOffset) {
    const std::size_t entrySize = size_ == coreSize ? 3 : 4;
    const std::uint64_t stored = size_ == coreSize ? 0 : field(32);
    if (header.bitsPerPixel > 8) {
      // Colours that somebody might want on a display with few; nobody reads them.
      if (pixelOffset == 0) end_ += stored * entrySize;
      return;
    }
    const std::uint64_t most = std::uint64_t{1} << header.bitsPerPixel;
    std::uint64_t count = stored == 0 ? most : stored;
    // Some files have fewer colours than they should; the pixels are where they are said to be.
    if (pixelOffset > end_) count = std::min(count, (pixelOffset - end_) / entrySize);
    header.palette.resize(std::min(count, most));
    std::vector<std::uint8_t> bytes(header.palette.size() * entrySize);
    input_.readAt(end_, bytes);
    for (std::size_t i = 0; i < header.palette.size(); ++i) {
      const std::uint8_t* entry = bytes.data() + i * entrySize;
      header.palette[i] = {.red = entry[2], .green = entry[1], .blue = entry[0]};
    }
    end_ += count * entrySize;
  }

  void readProfile(DibHeader& header) const {
    if (size_ == version5Size && field(56) == profileEmbedded)
      header.profile = {start_ + field(112), field(116)};
    if (size_ >= version4Size && field(56) == colorsCalibrated)
      header.calibration = DibCalibration::read(std::span(fields_).subspan<60, 48>());
  }

  const ImageInput& input_;
  const std::uint64_t start_;
  std::uint64_t end_ = 0;  // of what has been read
  std::uint32_t size_ = 0;
  std::uint32_t compression_ = 0;
  std::array<std::uint8_t, version5Size> fields_{};
};

}  // namespace

DibHeader DibHeader::read(const ImageInput& input, std::uint64_t offset, std::uint64_t pixelOffset,
                          FourthByte fourthByte) {
  return Parser(input, offset).parse(pixelOffset, fourthByte);
}

}  // namespace kestrivane

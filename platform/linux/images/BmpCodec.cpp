#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/BmpCodec.hpp"

#include <algorithm>
#include <array>
#include <vector>

#include "platform/linux/images/DibHeader.hpp"
#include "platform/linux/images/DibPixels.hpp"
#include "platform/linux/images/LittleEndian.hpp"
#include "platform/linux/images/OrderedStrips.hpp"

namespace kestrivane::bmp {
namespace {

using littleEndian::append16;
using littleEndian::append32;

constexpr std::uint32_t fileHeaderSize = 14;
constexpr std::uint32_t infoHeaderSize = 40;
constexpr std::uint32_t version4HeaderSize = 108;
constexpr std::uint32_t greyCount = 256;

/// How a layout is written.
struct Kind {
  std::uint32_t headerSize;
  std::uint32_t paletteCount;
  std::uint32_t bytesPerPixel;
};

Kind kindOf(PixelLayout layout) {
  if (layout.isGrey()) return {infoHeaderSize, greyCount, 1};
  if (layout.hasAlpha()) return {version4HeaderSize, 0, 4};
  return {infoHeaderSize, 0, 3};
}

std::vector<std::uint8_t> headers(const Kind& kind, std::uint32_t width, std::uint32_t height,
                                  std::uint32_t pixelBytes) {
  constexpr std::uint32_t pixelsPerMetre = 2835;  // 72 to the inch
  constexpr std::uint32_t bitFields = 3;
  const std::uint32_t pixelOffset = fileHeaderSize + kind.headerSize + kind.paletteCount * 4;

  std::vector<std::uint8_t> bytes{'B', 'M'};
  append32(bytes, pixelOffset + pixelBytes);
  append32(bytes, 0);
  append32(bytes, pixelOffset);

  append32(bytes, kind.headerSize);
  append32(bytes, width);
  append32(bytes, height);
  append16(bytes, 1);
  append16(bytes, kind.bytesPerPixel * 8);
  append32(bytes, kind.headerSize == version4HeaderSize ? bitFields : 0);
  append32(bytes, pixelBytes);
  append32(bytes, pixelsPerMetre);
  append32(bytes, pixelsPerMetre);
  append32(bytes, kind.paletteCount);
  append32(bytes, kind.paletteCount);
  if (kind.headerSize == version4HeaderSize) {
    for (const std::uint32_t mask : {0x00FF0000u, 0x0000FF00u, 0x000000FFu, 0xFF000000u})
      append32(bytes, mask);
    append32(bytes, 0x73524742);  // 'sRGB'; the end points and gammas that follow have no meaning
  }
  bytes.resize(fileHeaderSize + kind.headerSize);
  for (std::uint32_t grey = 0; grey < kind.paletteCount; ++grey)
    append32(bytes, grey * 0x010101);
  return bytes;
}

/// Changes the order of red and blue, which is all that tells the pixels of the file from ours.
void storeRow(const std::uint8_t* source, std::size_t width, std::size_t channels,
              std::uint8_t* target) {
  if (channels == 1) {
    std::copy_n(source, width, target);
    return;
  }
  for (std::size_t x = 0; x < width; ++x, source += channels, target += channels) {
    target[0] = source[2];
    target[1] = source[1];
    target[2] = source[0];
    if (channels == 4) target[3] = source[3];
  }
}

}  // namespace

bool recognise(std::span<const std::uint8_t> start) {
  return start.size() >= 2 && start[0] == 'B' && start[1] == 'M';
}

PixelBuffer decode(const ImageInput& input) {
  std::array<std::uint8_t, fileHeaderSize> fileHeader;
  input.readAt(0, fileHeader);
  const auto header = DibHeader::read(input, fileHeaderSize, littleEndian::load32(&fileHeader[10]),
                                      FourthByte::unused);
  PixelBuffer picture = readDibPixels(input, header).picture;
  if (header.calibration) picture.iccProfile = header.calibration->profile();
  if (header.profile.size == 0) return picture;
  if (header.profile.size > input.size()) throw ImageError("the profile is cut short");
  picture.iccProfile.resize(header.profile.size);
  input.readAt(header.profile.offset, picture.iccProfile);
  return picture;
}

PixelLayout encodedLayout(PixelLayout source) {
  if (source.hasAlpha()) return {Channels::rgba, Depth::eight};
  return {source.channels, Depth::eight};
}

void encode(PixelRows& picture, ImageOutput& output) {
  const Kind kind = kindOf(picture.layout());
  const std::size_t rowBytes = (picture.width() * kind.bytesPerPixel + 3) / 4 * 4;
  const auto pixelBytes = static_cast<std::uint32_t>(rowBytes * picture.height());
  output.write(headers(kind, static_cast<std::uint32_t>(picture.width()),
                       static_cast<std::uint32_t>(picture.height()), pixelBytes));

  // A strip is as much as the output writes without a copy of its own. While one thread writes, as
  // far as the system's copy of the pixels goes, another can convert.
  constexpr std::size_t maximumThreads = 2;
  const std::size_t stripRows = std::min(ImageOutput::bufferSize / rowBytes + 1, picture.height());
  OrderedStrips strips((picture.height() + stripRows - 1) / stripRows, maximumThreads);
  strips.run([&] {
    std::vector<std::uint8_t> scratch(picture.scratchBytes());
    std::vector<std::uint8_t> stored(stripRows * rowBytes);
    while (const std::optional<std::size_t> strip = strips.take()) {
      const std::size_t end = picture.height() - *strip * stripRows;
      const std::size_t count = std::min(stripRows, end);
      for (std::size_t line = 0; line < count; ++line)
        storeRow(picture.row(end - 1 - line, scratch.data()), picture.width(), kind.bytesPerPixel,
                 stored.data() + line * rowBytes);
      strips.inOrder(*strip, [&] { output.write(std::span(stored).first(count * rowBytes)); });
    }
  });
}

}  // namespace kestrivane::bmp

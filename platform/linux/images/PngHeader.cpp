#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngHeader.hpp"

#include "platform/linux/images/ImageError.hpp"
#include "platform/linux/images/PngChunk.hpp"

namespace kestrivane::png {
namespace {

bool isPermitted(ColorType type, std::size_t bitDepth) {
  const bool isWhole = bitDepth == 8 || bitDepth == 16;
  const bool isShallow = bitDepth == 1 || bitDepth == 2 || bitDepth == 4;
  switch (type) {
    case ColorType::grey:
      return isShallow || isWhole;
    case ColorType::palette:
      return isShallow || bitDepth == 8;
    case ColorType::rgb:
    case ColorType::greyAlpha:
    case ColorType::rgba:
      return isWhole;
  }
  return false;
}

std::size_t channelCount(ColorType type) {
  switch (type) {
    case ColorType::greyAlpha:
      return 2;
    case ColorType::rgb:
      return 3;
    case ColorType::rgba:
      return 4;
    default:
      return 1;
  }
}

}  // namespace

Header Header::parse(std::span<const std::uint8_t> content) {
  if (content.size() != 13) throw ImageError("the PNG's header has an unexpected size");
  const Header header{.width = fromBigEndian(content.first<4>()),
                      .height = fromBigEndian(content.subspan<4, 4>()),
                      .bitDepth = content[8],
                      .colorType = static_cast<ColorType>(content[9]),
                      .interlacing = static_cast<Interlacing>(content[12])};
  const bool hasKnownMethods = content[10] == 0 && content[11] == 0 && content[12] <= 1;
  if (!isPermitted(header.colorType, header.bitDepth) || !hasKnownMethods)
    throw ImageError("the PNG is of an unknown kind");
  checkArea(header.width, header.height);
  return header;
}

std::size_t Header::bitsPerPixel() const {
  return channelCount(colorType) * bitDepth;
}

}  // namespace kestrivane::png

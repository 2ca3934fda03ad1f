#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/IcoCodec.hpp"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/linux/images/DibHeader.hpp"
#include "platform/linux/images/DibPixels.hpp"
#include "platform/linux/images/LittleEndian.hpp"
#include "platform/linux/images/PngCodec.hpp"

namespace kestrivane::ico {
namespace {

using littleEndian::append16;
using littleEndian::append32;
using littleEndian::load16;
using littleEndian::load32;

constexpr std::size_t fileHeaderSize = 6;
constexpr std::size_t entrySize = 16;
constexpr std::size_t maximumIconSide = 256;
constexpr std::uint32_t infoHeaderSize = 40;

using Bytes = std::span<const std::uint8_t>;

/// Bytes of a row of the mask: one bit a pixel, rows end at a multiple of four.
std::size_t maskRowBytes(std::size_t width) {
  return (width + 31) / 32 * 4;
}

/// How good a picture is to be chosen: area, then depth.
using Rank = std::pair<std::uint64_t, unsigned>;

/// The directory may say 0 for depth and has no room for large sizes, so the picture is asked.
Rank rankOf(Bytes picture) {
  if (png::recognise(picture)) {
    // The header chunk comes first: width, height, depth of a channel, kind of colour.
    constexpr std::array<std::uint8_t, 7> channelsOfKind{1, 0, 3, 1, 2, 0, 4};
    if (picture.size() < 26) throw ImageError("ICO: a PNG that is cut short");
    const auto big32 = [&](std::size_t at) {
      return std::uint64_t{picture[at]} << 24 | std::uint64_t{picture[at + 1]} << 16 |
             std::uint64_t{picture[at + 2]} << 8 | picture[at + 3];
    };
    const std::uint8_t kind = std::min<std::uint8_t>(picture[25], channelsOfKind.size() - 1);
    return {big32(16) * big32(20), unsigned{picture[24]} * channelsOfKind[kind]};
  }
  const auto header = DibHeader::read(ImageInput::ofBytes(picture), 0, 0, FourthByte::alpha);
  return {std::uint64_t{header.width} * (header.height / 2), header.bitsPerPixel};
}

/// The picture with an alpha channel that is 0 wherever a bit of the mask is set.
PixelBuffer withMask(const PixelBuffer& picture, const std::vector<std::uint8_t>& mask) {
  const std::size_t colours = picture.layout().isGrey() ? 1 : 3;
  const std::size_t channels = picture.layout().channelCount();
  const std::size_t rowBytes = maskRowBytes(picture.width());
  auto masked =
      PixelBuffer::create(picture.width(), picture.height(),
                          {colours == 1 ? Channels::greyAlpha : Channels::rgba, Depth::eight});
  for (std::size_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* source = picture.row(y);
    const std::uint8_t* bits = mask.data() + (picture.height() - 1 - y) * rowBytes;
    std::uint8_t* target = masked.row(y);
    for (std::size_t x = 0; x < picture.width(); ++x, source += channels) {
      target = std::copy_n(source, colours, target);
      *target++ = (bits[x / 8] << (x % 8) & 0x80) != 0 ? 0 : 255;
    }
  }
  return masked;
}

PixelBuffer decodeBitmap(Bytes bytes) {
  const ImageInput input = ImageInput::ofBytes(bytes);
  auto header = DibHeader::read(input, 0, 0, FourthByte::alpha);
  if (header.topDown || header.height % 2 != 0 || header.compression != DibCompression::none)
    throw ImageError("ICO: a bitmap that is not one of an icon");
  header.height /= 2;  // the other half is the mask
  DibPixels pixels = readDibPixels(input, header);
  if (pixels.hasAlpha) return std::move(pixels.picture);
  if (pixels.picture.layout().depth != Depth::eight) throw ImageError("ICO: a bitmap too deep");

  std::vector<std::uint8_t> mask(maskRowBytes(header.width) * header.height);
  input.readAt(header.pixelOffset + header.storedRowBytes() * header.height, mask);
  return withMask(pixels.picture, mask);
}

/// The bytes of the best picture in the file.
std::vector<std::uint8_t> bestPicture(const ImageInput& input) {
  std::array<std::uint8_t, fileHeaderSize> fileHeader;
  input.readAt(0, fileHeader);
  std::vector<std::uint8_t> directory(load16(&fileHeader[4]) * entrySize);
  input.readAt(fileHeaderSize, directory);

  std::uint32_t bestSize = 0;
  std::uint32_t bestOffset = 0;
  Rank bestRank{};
  for (std::size_t at = 0; at < directory.size(); at += entrySize) {
    const std::uint32_t size = load32(&directory[at + 8]);
    const std::uint32_t offset = load32(&directory[at + 12]);
    if (offset > input.size() || size > input.size() - offset)
      throw ImageError("ICO: a picture outside the file");
    // Headers and palettes are shorter than this.
    std::vector<std::uint8_t> start(std::min<std::uint32_t>(size, 2048));
    input.readAt(offset, start);
    const Rank rank = rankOf(start);
    if (rank <= bestRank) continue;
    bestSize = size;
    bestOffset = offset;
    bestRank = rank;
  }
  std::vector<std::uint8_t> best(bestSize);
  if (best.empty()) throw ImageError("ICO: no picture in the file");
  input.readAt(bestOffset, best);
  return best;
}

/// A header whose height is that of colours and mask together, the colours, and the mask, which
/// old programs look at instead of alpha.
void encodeBitmap(const PixelRows& picture, ImageOutput& output) {
  const std::size_t width = picture.width();
  const std::size_t height = picture.height();
  std::vector<std::uint8_t> bytes;
  append32(bytes, infoHeaderSize);
  append32(bytes, static_cast<std::uint32_t>(width));
  append32(bytes, static_cast<std::uint32_t>(height * 2));
  append16(bytes, 1);
  append16(bytes, 32);
  bytes.resize(infoHeaderSize);

  std::vector<std::uint8_t> scratch(picture.scratchBytes());
  const std::size_t rowBytes = maskRowBytes(width);
  std::vector<std::uint8_t> mask(rowBytes * height);
  for (std::size_t line = 0; line < height; ++line) {
    const std::uint8_t* pixel = picture.row(height - 1 - line, scratch.data());
    for (std::size_t x = 0; x < width; ++x, pixel += 4) {
      bytes.insert(bytes.end(), {pixel[2], pixel[1], pixel[0], pixel[3]});
      if (pixel[3] < 128) mask[line * rowBytes + x / 8] |= static_cast<std::uint8_t>(0x80 >> x % 8);
    }
  }
  output.write(bytes);
  output.write(mask);
}

}  // namespace

bool recognise(std::span<const std::uint8_t> start) {
  constexpr std::array<std::uint8_t, 4> icon{0, 0, 1, 0};
  return start.size() >= icon.size() && std::equal(icon.begin(), icon.end(), start.begin());
}

PixelBuffer decode(const ImageInput& input) {
  const std::vector<std::uint8_t> picture = bestPicture(input);
  return png::recognise(picture) ? png::decode(ImageInput::ofBytes(picture))
                                 : decodeBitmap(picture);
}

PixelLayout encodedLayout(PixelLayout) {
  return {Channels::rgba, Depth::eight};
}

void encode(PixelRows& picture, ImageOutput& output) {
  if (picture.width() > maximumIconSide || picture.height() > maximumIconSide)
    throw ImageError("ICO: the picture is too large for the format");
  std::vector<std::uint8_t> head{0, 0, 1, 0, 1, 0};
  head.push_back(static_cast<std::uint8_t>(picture.width()));  // 256 becomes 0, as it should
  head.push_back(static_cast<std::uint8_t>(picture.height()));
  append16(head, 0);
  append16(head, 1);
  append16(head, 32);
  const std::size_t sizeField = head.size();
  append32(head, 0);
  append32(head, fileHeaderSize + entrySize);

  const std::uint64_t start = output.position();
  output.write(head);
  if (std::max(picture.width(), picture.height()) == maximumIconSide)
    png::encode(picture, output);
  else
    encodeBitmap(picture, output);

  const std::uint64_t end = output.position();
  std::vector<std::uint8_t> size;
  append32(size, static_cast<std::uint32_t>(end - start - head.size()));
  output.seek(start + sizeField);
  output.write(size);
  output.seek(end);
}

}  // namespace kestrivane::ico

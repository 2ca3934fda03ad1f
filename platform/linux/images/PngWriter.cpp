#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngWriter.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include <libdeflate.h>

#include "platform/linux/images/PngChunk.hpp"
#include "platform/linux/images/PngDeflater.hpp"
#include "platform/linux/images/PngHeader.hpp"
#include "platform/linux/images/PngRowFilter.hpp"
#include "platform/linux/images/PngStrips.hpp"

namespace kestrivane::png {
namespace {

using Bytes = std::span<const std::uint8_t>;

ColorType colorType(Channels channels) {
  switch (channels) {
    case Channels::grey:
      return ColorType::grey;
    case Channels::rgb:
      return ColorType::rgb;
    case Channels::greyAlpha:
      return ColorType::greyAlpha;
    default:
      return ColorType::rgba;
  }
}

void writeHeader(const PixelRows& picture, ImageOutput& output) {
  const auto width = bigEndian(static_cast<std::uint32_t>(picture.width()));
  const auto height = bigEndian(static_cast<std::uint32_t>(picture.height()));
  std::array<std::uint8_t, 13> header{};  // ends with three methods of which there is one each
  std::ranges::copy(width, header.begin());
  std::ranges::copy(height, header.begin() + 4);
  header[8] = static_cast<std::uint8_t>(picture.layout().depth);
  header[9] = static_cast<std::uint8_t>(colorType(picture.layout().channels));
  writeChunk("IHDR", header, output);
}

void writeProfile(Bytes profile, ImageOutput& output) {
  constexpr std::string_view name("ICC profile\0\0", 13);  // then the one compression method
  std::vector<std::uint8_t> chunk(name.begin(), name.end());
  Deflater deflater(9);
  const Bytes compressed = deflater.compress(profile, StreamEnd::yes);
  const auto checksum = bigEndian(libdeflate_adler32(1, profile.data(), profile.size()));
  chunk.insert(chunk.end(), zlibHeader.begin(), zlibHeader.end());
  chunk.insert(chunk.end(), compressed.begin(), compressed.end());
  chunk.insert(chunk.end(), checksum.begin(), checksum.end());
  writeChunk("iCCP", chunk, output);
}

/// Compresses samples from all over the picture both ways.
FilterChoice betterChoice(const PixelRows& picture) {
  constexpr std::size_t bands = 8;
  constexpr std::size_t bandBytes = 64 * 1024;
  const std::size_t bandRows =
      std::clamp<std::size_t>(bandBytes / picture.rowBytes(), 1, picture.height());
  const std::size_t step = std::max(picture.height() / bands, bandRows);
  RowFilter filter(picture);
  Deflater deflater(1);
  const auto compressedSize = [&](FilterChoice choice) {
    std::vector<std::uint8_t> rows;
    for (std::size_t y = 0; y < picture.height(); y += step)
      filter.append(y, std::min(y + bandRows, picture.height()), choice, rows);
    return deflater.compress(rows, StreamEnd::yes).size();
  };
  return compressedSize(FilterChoice::none) < compressedSize(FilterChoice::perRow)
             ? FilterChoice::none
             : FilterChoice::perRow;
}

}  // namespace

void write(const PixelRows& picture, ImageOutput& output) {
  output.write(signature);
  writeHeader(picture, output);
  if (!picture.iccProfile().empty()) writeProfile(picture.iccProfile(), output);
  writeStrips(picture, betterChoice(picture), output);
  writeChunk("IEND", {}, output);
}

}  // namespace kestrivane::png

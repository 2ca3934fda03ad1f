#include "tests/platform/images/PngPeer.hpp"

#include <algorithm>
#include <bit>
#include <random>
#include <stdexcept>

#include <png.h>

namespace kestrivane::imageTesting {
namespace {

[[noreturn]] void fail(png_structp, png_const_charp message) {
  throw std::runtime_error(message);
}

void ignoreWarning(png_structp, png_const_charp) {}

void append(png_structp codec, png_bytep bytes, std::size_t count) {
  auto& target = *static_cast<Bytes*>(png_get_io_ptr(codec));
  target.insert(target.end(), bytes, bytes + count);
}

void take(png_structp codec, png_bytep target, std::size_t count) {
  auto& source = *static_cast<std::span<const std::uint8_t>*>(png_get_io_ptr(codec));
  if (source.size() < count) throw std::runtime_error("the file is cut short");
  std::copy_n(source.begin(), count, target);
  source = source.subspan(count);
}

}  // namespace

Bytes writtenByLibpng(const png::Header& header, const PngExtras& extras) {
  Bytes bytes;
  png_structp codec = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignoreWarning);
  png_infop info = png_create_info_struct(codec);
  png_set_write_fn(codec, &bytes, append, nullptr);
  png_set_IHDR(codec, info, static_cast<png_uint_32>(header.width),
               static_cast<png_uint_32>(header.height), static_cast<int>(header.bitDepth),
               static_cast<int>(header.colorType), static_cast<int>(header.interlacing),
               PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
  std::vector<png_color> palette;
  for (std::size_t i = 0; i + 2 < extras.palette.size(); i += 3)
    palette.push_back({extras.palette[i], extras.palette[i + 1], extras.palette[i + 2]});
  if (!palette.empty()) png_set_PLTE(codec, info, palette.data(), static_cast<int>(palette.size()));
  const png_color_16 key{0, extras.key, extras.key, extras.key, extras.key};
  if (extras.hasKey) png_set_tRNS(codec, info, nullptr, 0, &key);
  if (!extras.transparency.empty())
    png_set_tRNS(codec, info, extras.transparency.data(),
                 static_cast<int>(extras.transparency.size()), nullptr);
  png_set_filter(codec, PNG_FILTER_TYPE_BASE, PNG_ALL_FILTERS);
  png_set_compression_level(codec, 1);
  png_set_compression_buffer_size(codec, 1000);  // several chunks
  png_write_info(codec, info);

  // Values repeat, so that keys are met; indices stay inside the palette.
  std::mt19937 random(static_cast<unsigned>(header.width * 31 + header.bitDepth));
  const unsigned values =
      palette.empty() || header.bitDepth < 8 ? 16 : static_cast<unsigned>(palette.size());
  std::vector<Bytes> rows(header.height, Bytes(header.rowBytes(header.width)));
  for (Bytes& row : rows)
    for (std::uint8_t& byte : row)
      byte = static_cast<std::uint8_t>(random() % values * (palette.empty() ? 17 : 1));
  std::vector<png_bytep> pointers;
  for (Bytes& row : rows)
    pointers.push_back(row.data());
  png_write_image(codec, pointers.data());
  png_write_end(codec, info);
  png_destroy_write_struct(&codec, &info);
  return bytes;
}

PixelBuffer readByLibpng(std::span<const std::uint8_t> bytes) {
  png_structp codec = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignoreWarning);
  png_infop info = png_create_info_struct(codec);
  png_set_read_fn(codec, &bytes, take);
  png_read_info(codec, info);
  png_set_expand(codec);
  if constexpr (std::endian::native == std::endian::little) png_set_swap(codec);
  png_set_interlace_handling(codec);
  png_read_update_info(codec, info);
  PixelBuffer picture =
      PixelBuffer::create(png_get_image_width(codec, info), png_get_image_height(codec, info),
                          {static_cast<Channels>(png_get_channels(codec, info)),
                           png_get_bit_depth(codec, info) == 16 ? Depth::sixteen : Depth::eight});
  std::vector<png_bytep> rows;
  for (std::size_t y = 0; y < picture.height(); ++y)
    rows.push_back(picture.row(y));
  png_read_image(codec, rows.data());
  png_read_end(codec, info);
  png_destroy_read_struct(&codec, &info, nullptr);
  return picture;
}

}  // namespace kestrivane::imageTesting

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngChunk.hpp"

#include <libdeflate.h>

namespace kestrivane::png {
namespace {

std::span<const std::uint8_t> bytesOf(std::string_view type) {
  return {reinterpret_cast<const std::uint8_t*>(type.data()), type.size()};
}

}  // namespace

std::uint32_t chunkChecksum(std::string_view type, std::span<const std::uint8_t> data) {
  const std::uint32_t ofType = libdeflate_crc32(0, type.data(), type.size());
  // libdeflate takes a null pointer as a call for the initial value.
  return data.empty() ? ofType : libdeflate_crc32(ofType, data.data(), data.size());
}

void writeChunk(std::string_view type, std::span<const std::uint8_t> data, ImageOutput& output) {
  writeChunk(type, data, chunkChecksum(type, data), output);
}

void writeChunk(std::string_view type, std::span<const std::uint8_t> data, std::uint32_t checksum,
                ImageOutput& output) {
  output.write(bigEndian(static_cast<std::uint32_t>(data.size())));
  output.write(bytesOf(type));
  output.write(data);
  output.write(bigEndian(checksum));
}

}  // namespace kestrivane::png

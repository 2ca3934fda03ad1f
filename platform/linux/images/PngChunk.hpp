// The parts of a PNG file (ISO/IEC 15948, clause 5): what reading and writing share, and writing.
//
// Thread-safety: functions without state; an output is written to by one thread at a time.
// Ownership: everything is borrowed.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/linux/images/ImageOutput.hpp"

namespace kestrivane::png {

/// What a PNG file starts with.
inline constexpr std::array<std::uint8_t, 8> signature = {0x89, 'P',  'N',  'G',
                                                          '\r', '\n', 0x1A, '\n'};

/// What a zlib stream (RFC 1950) starts with: deflate with a window of 32 KiB.
inline constexpr std::array<std::uint8_t, 2> zlibHeader = {0x78, 0x9C};

constexpr std::array<std::uint8_t, 4> bigEndian(std::uint32_t value) {
  return {static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
          static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

constexpr std::uint32_t fromBigEndian(std::span<const std::uint8_t, 4> bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

/// The checksum of a chunk of four letters `type` that holds `data`.
std::uint32_t chunkChecksum(std::string_view type, std::span<const std::uint8_t> data);

void writeChunk(std::string_view type, std::span<const std::uint8_t> data, ImageOutput& output);

/// The same where the checksum is known.
void writeChunk(std::string_view type, std::span<const std::uint8_t> data, std::uint32_t checksum,
                ImageOutput& output);

}  // namespace kestrivane::png

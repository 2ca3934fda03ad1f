// Numbers of the formats that store their low byte first (BMP, ICO).
//
// Thread-safety: functions without state. Ownership: `load` reads from bytes that the caller has
// checked to be there, `append` adds to the caller's bytes.
#pragma once

#include <cstdint>
#include <vector>

namespace kestrivane::littleEndian {

inline std::uint16_t load16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

inline std::uint32_t load32(const std::uint8_t* bytes) {
  return load16(bytes) | static_cast<std::uint32_t>(load16(bytes + 2)) << 16;
}

inline void append16(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
  bytes.push_back(static_cast<std::uint8_t>(value));
  bytes.push_back(static_cast<std::uint8_t>(value >> 8));
}

inline void append32(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
  append16(bytes, value);
  append16(bytes, value >> 16);
}

}  // namespace kestrivane::littleEndian

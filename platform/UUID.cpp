#include "platform/UUID.hpp"

#include <array>
#include <cstdint>
#include <random>

namespace kestrivane {

std::string makeUUIDString() {
  std::random_device entropy;
  std::array<std::uint8_t, 16> bytes;
  for (std::uint8_t& byte : bytes)
    byte = static_cast<std::uint8_t>(entropy());
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4: random
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // the RFC's variant

  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += "0123456789ABCDEF"[bytes[i] >> 4];
    text += "0123456789ABCDEF"[bytes[i] & 0x0F];
  }
  return text;
}

}  // namespace kestrivane

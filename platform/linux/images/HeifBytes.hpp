// Reads the numbers and boxes of an ISO base media file (ISO/IEC 14496-12, 4.2), which is what a
// HEIC is; all numbers are big-endian.
//
// Every reading function throws `ImageError` when the bytes end before. Thread-safety: none.
// Ownership: the bytes are borrowed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/linux/images/ImageError.hpp"

namespace kestrivane::heic {

/// Four characters as the number that stands for them in a file.
constexpr std::uint32_t fourCC(const char (&name)[5]) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i)
    value = value << 8 | static_cast<std::uint8_t>(name[i]);
  return value;
}

class HeifBytes {
 public:
  explicit HeifBytes(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  bool empty() const { return bytes_.empty(); }
  std::span<const std::uint8_t> rest() const { return bytes_; }

  std::span<const std::uint8_t> take(std::uint64_t count) {
    if (count > bytes_.size()) throw ImageError("the HEIC ends too early");
    const auto taken = bytes_.first(static_cast<std::size_t>(count));
    bytes_ = bytes_.subspan(taken.size());
    return taken;
  }

  /// A number of `count` bytes, 0 to 8; one of no bytes is 0.
  std::uint64_t number(std::size_t count) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : take(count))
      value = value << 8 | byte;
    return value;
  }
  std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
  std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
  std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }

 private:
  std::span<const std::uint8_t> bytes_;
};

struct HeifBox {
  std::uint32_t type;
  HeifBytes body;
};

/// Takes the box with which `bytes` begin.
inline HeifBox takeBox(HeifBytes& bytes) {
  std::uint64_t size = bytes.u32();
  const std::uint32_t type = bytes.u32();
  if (size == 0) return {type, HeifBytes(bytes.take(bytes.rest().size()))};
  std::uint64_t header = 8;
  if (size == 1) {
    size = bytes.number(8);
    header = 16;
  }
  if (size < header) throw ImageError("a box of the HEIC is too short");
  return {type, HeifBytes(bytes.take(size - header))};
}

}  // namespace kestrivane::heic

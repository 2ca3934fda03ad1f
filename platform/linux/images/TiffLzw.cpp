#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/TiffLzw.hpp"

#include <algorithm>

namespace kestrivane::tiff {
namespace {

constexpr std::uint32_t clearCode = 256;
constexpr std::uint32_t endCode = 257;
constexpr std::uint32_t firstFreeCode = 258;
constexpr std::uint32_t lastCode = 4094;
constexpr unsigned smallestWidth = 9;

constexpr std::uint32_t freePlace = 0xFFFFFFFF;  // stands for no string: no code is that large

}  // namespace

std::span<std::uint8_t> LzwEncoder::encode(std::span<const std::uint8_t> bytes) & {
  // A byte takes at most 12 bits, and the codes between strings are few.
  stored_.resize(bytes.size() * 2 + 64);
  end_ = stored_.data();
  bits_ = 0;
  bitCount_ = 0;
  width_ = smallestWidth;
  put(clearCode);
  startTable();

  std::uint32_t prefix = bytes.front();
  for (const std::uint32_t byte : bytes.subspan(1)) {
    const std::uint32_t string = prefix << 8 | byte;
    std::uint32_t& entry = placeOf(string);
    if (entry != freePlace) {
      prefix = entry & 0xFFF;
      continue;
    }
    put(prefix);
    entry = string << 12 | nextCode_;
    countCode();
    prefix = byte;
  }
  put(prefix);
  countCode();
  put(endCode);
  bits_ <<= 32 - bitCount_;
  for (unsigned shift = 24; bitCount_ > 0; shift -= 8, bitCount_ -= std::min(bitCount_, 8U))
    *end_++ = static_cast<std::uint8_t>(bits_ >> shift);
  return {stored_.data(), end_};
}

void LzwEncoder::startTable() {
  table_.fill(freePlace);
  nextCode_ = firstFreeCode;
  width_ = smallestWidth;
}

/// Where the string is, or the free place where it belongs. The prefix is known last, as the result
/// of the step before, so it goes the shortest way into the place.
std::uint32_t& LzwEncoder::placeOf(std::uint32_t string) {
  static_assert(tableSize == 1 << 14);
  const std::uint32_t ofByte = ((string & 0xFF) * 0x9E3779B1U) >> (32 - 14);
  std::size_t place = string >> 8 ^ ofByte;
  while (table_[place] >> 12 != string && table_[place] != freePlace)
    place = (place + 1) % tableSize;
  return table_[place];
}

void LzwEncoder::put(std::uint32_t code) {
  bits_ = bits_ << width_ | code;
  bitCount_ += width_;
  if (bitCount_ < 32) return;
  bitCount_ -= 32;
  const std::uint32_t full = static_cast<std::uint32_t>(bits_ >> bitCount_);
  for (unsigned shift = 32; shift > 0; shift -= 8)
    *end_++ = static_cast<std::uint8_t>(full >> (shift - 8));
}

/// A code more is known; its reader knows it one code later.
void LzwEncoder::countCode() {
  if (nextCode_ == lastCode) {
    put(clearCode);
    startTable();
    return;
  }
  ++nextCode_;
  if (nextCode_ == std::uint32_t{1} << width_) ++width_;
}

}  // namespace kestrivane::tiff

// The compression of TIFF (Adobe TIFF 6.0, section 13): LZW with codes of 9 to 12 bits, which grow
// one code early, from the highest bit of a byte on.
//
// Thread-safety: none; give each thread its own. Ownership: owns its table and the compressed
// bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kestrivane::tiff {

class LzwEncoder {
 public:
  /// One strip, compressed; the result stays until the next call.
  std::span<std::uint8_t> encode(std::span<const std::uint8_t> bytes) &;

 private:
  void startTable();
  std::uint32_t& placeOf(std::uint32_t string);
  void put(std::uint32_t code);
  void countCode();

  /// Four times the codes, so that few strings want the same place.
  static constexpr std::size_t tableSize = 16'384;

  /// Strings by their prefix's code and their last byte, in the upper 20 bits; the code of the
  /// whole is in the lower 12.
  std::array<std::uint32_t, tableSize> table_;
  std::uint32_t nextCode_ = 0;
  unsigned width_ = 0;  // of a code, in bits

  std::uint64_t bits_ = 0;  // not yet stored, the latest in the lowest
  unsigned bitCount_ = 0;
  std::vector<std::uint8_t> stored_;
  std::uint8_t* end_ = nullptr;  // of what is stored
};

}  // namespace kestrivane::tiff

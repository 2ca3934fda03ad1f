// Reads a PNG chunk by chunk (ISO/IEC 15948, clause 5), from the first one on.
//
// The checksum of every chunk is compared, also of those that are passed over. Memory is taken for
// what is there, never for what a chunk claims to hold. Thread-safety: none. Ownership: borrows the
// input, which outlives the reader.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/linux/images/ImageInput.hpp"

namespace kestrivane::png {

class ChunkReader {
 public:
  explicit ChunkReader(const ImageInput& input);

  // Each throws `ImageError` when the file is cut short or damaged.

  /// Goes on to the next chunk; the rest of the present one is passed over.
  void next();

  /// Passes over the rest of the present chunk, which is the last to be read.
  void finish();

  /// The four letters of the present chunk; empty before the first one.
  std::string_view type() const { return {type_.data(), typeSize_}; }

  /// Whether a reader that does not know the present chunk must refuse the file.
  bool isCritical() const { return (type_[0] & 0x20) == 0; }

  /// The bytes of the present chunk that have not been read yet.
  std::size_t left() const { return left_; }

  /// The next bytes of the present chunk, as many as are at hand, at least one; empty at its end.
  /// They stay until the next call of any operation.
  std::span<const std::uint8_t> read();

  /// The whole rest of the present chunk.
  std::vector<std::uint8_t> readAll();

 private:
  std::span<const std::uint8_t> take(std::size_t count);
  void refill();

  const ImageInput& input_;
  std::uint64_t offset_;  // where the input goes on after the buffer
  std::vector<std::uint8_t> buffer_;
  std::size_t next_ = 0;
  std::size_t end_ = 0;

  std::array<char, 4> type_{};
  std::size_t typeSize_ = 0;
  std::size_t left_ = 0;
  std::uint32_t checksum_ = 0;  // of the type and what has been read
};

}  // namespace kestrivane::png

// Reads an input from a place on, byte by byte or in small pieces, through a buffer.
//
// Thread-safety: none. Ownership: borrows the input, which outlives the reader.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "platform/linux/images/ImageError.hpp"
#include "platform/linux/images/ImageInput.hpp"

namespace kestrivane {

class SequentialReader {
 public:
  SequentialReader(const ImageInput& input, std::uint64_t offset)
      : input_(input), offset_(offset) {}

  /// Fills `target` unless the input ends before. Returns the number of bytes read.
  std::size_t readUpTo(std::span<std::uint8_t> target) noexcept {
    std::size_t done = 0;
    while (done < target.size()) {
      if (next_ == end_ && !refill()) break;
      const std::size_t count = std::min(target.size() - done, end_ - next_);
      std::copy_n(buffer_.data() + next_, count, target.data() + done);
      next_ += count;
      done += count;
    }
    return done;
  }

  /// The next byte. Throws `ImageError` at the end of the input.
  std::uint8_t byte() {
    if (next_ == end_ && !refill()) throw ImageError("the file is cut short");
    return buffer_[next_++];
  }

 private:
  bool refill() noexcept {
    next_ = 0;
    end_ = input_.readUpTo(offset_, buffer_);
    offset_ += end_;
    return end_ > 0;
  }

  const ImageInput& input_;
  std::uint64_t offset_;  // where the input goes on after the buffer
  std::size_t next_ = 0;
  std::size_t end_ = 0;
  std::array<std::uint8_t, 16 * 1024> buffer_;
};

}  // namespace kestrivane

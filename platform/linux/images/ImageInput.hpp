// The bytes of a picture to be decoded: a file that is read as needed, or bytes in memory.
//
// Nothing is mapped, so a file that somebody cuts short meanwhile is a short read, not a signal.
// Thread-safety: may be read from any thread. Ownership: owns the descriptor of its file; bytes in
// memory are borrowed and outlive the input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/FileURL.hpp"
#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane {

class ImageInput {
 public:
  /// Opens the regular file at `url`; nothing when there is none or it cannot be read. Does not
  /// wait, whatever is there.
  static std::optional<ImageInput> open(const FileURL& url);

  static ImageInput ofBytes(std::span<const std::uint8_t> bytes) { return ImageInput(bytes); }

  /// Bytes; of a file, its size when it was opened.
  std::uint64_t size() const { return size_; }

  /// Reads from `offset` on until `target` is full, the input ends or an error occurs. Returns the
  /// number of bytes read. Made for the callbacks of C libraries, which an exception must not
  /// leave.
  std::size_t readUpTo(std::uint64_t offset, std::span<std::uint8_t> target) const noexcept;

  /// Fills `target` from `offset` on. Throws `ImageError` when the input ends before.
  void readAt(std::uint64_t offset, std::span<std::uint8_t> target) const;

  /// All bytes. Throws `ImageError` when they cannot be read or are more than 1 GiB.
  std::vector<std::uint8_t> readAll() const;

 private:
  ImageInput(FileDescriptor file, std::uint64_t size) : file_(std::move(file)), size_(size) {}
  explicit ImageInput(std::span<const std::uint8_t> bytes) : bytes_(bytes), size_(bytes.size()) {}

  FileDescriptor file_;
  std::span<const std::uint8_t> bytes_;
  std::uint64_t size_;
};

}  // namespace kestrivane

// The file that a picture is written to.
//
// Writes are gathered in a buffer. The first error (a full disk, a file size limit) is kept: later
// writes do nothing and `finish` reports it, so a codec need not look at every result. A file that
// was not finished is removed. Thread-safety: none. Ownership: owns its descriptor, and the file
// until `finish`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/FileURL.hpp"
#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane {

class ImageOutput {
 public:
  /// Writes of so many bytes go to the file without another copy.
  static constexpr std::size_t bufferSize = 256 * 1024;

  /// Creates the file, for its owner alone; nothing when it exists or cannot be created.
  static std::optional<ImageOutput> create(const FileURL& url);

  ImageOutput(ImageOutput&& other) noexcept = default;
  ImageOutput& operator=(ImageOutput&&) = delete;
  ~ImageOutput();

  /// Writes at the current place and moves on; false after an error.
  bool write(std::span<const std::uint8_t> bytes) noexcept;

  /// The current place, in bytes from the start.
  std::uint64_t position() const { return flushed_ + buffer_.size(); }

  /// The next write goes to `position`.
  bool seek(std::uint64_t position) noexcept;

  /// Hands everything to the system and keeps the file; false if anything failed on the way.
  bool finish() noexcept;

 private:
  ImageOutput(FileDescriptor file, std::string path);
  bool flush() noexcept;
  bool writeThrough(std::span<const std::uint8_t> bytes) noexcept;

  FileDescriptor file_;
  std::string path_;
  std::vector<std::uint8_t> buffer_;
  std::uint64_t flushed_ = 0;  // where the buffer's first byte belongs
  bool failed_ = false;
  bool finished_ = false;
};

}  // namespace kestrivane

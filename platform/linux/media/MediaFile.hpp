// A file that the media libraries read or write through a buffer.
//
// Errors of the system reach the libraries' callers as their codes. Thread-safety: none.
// Ownership: owns its descriptor and buffer; its address is known to the library, so that it stays
// where it was made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "platform/FileURL.hpp"
#include "platform/linux/FileDescriptor.hpp"

struct AVIOContext;

namespace kestrivane {

class MediaFile {
 public:
  /// Throws `PlatformError`.
  static std::unique_ptr<MediaFile> openForReading(const FileURL& url);
  /// Creates the file, for its owner alone. It is removed again unless it is kept. Throws
  /// `PlatformError`, also when it exists.
  static std::unique_ptr<MediaFile> create(const FileURL& url);

  MediaFile(const MediaFile&) = delete;
  MediaFile& operator=(const MediaFile&) = delete;
  ~MediaFile();

  AVIOContext* context() const { return context_; }

  /// The size of the file now, in bytes.
  std::int64_t size() const;

  /// The first bytes of the file, as many as fit and there are. Does not move the place of reading.
  std::size_t readBeginning(std::span<std::uint8_t> bytes) const;

  /// The file is to stay.
  void keep() { path_.clear(); }

 private:
  MediaFile(FileDescriptor file, std::string pathToRemove);

  static int read(void* self, std::uint8_t* buffer, int length);
  static int write(void* self, const std::uint8_t* buffer, int length);
  static std::int64_t seek(void* self, std::int64_t offset, int whence);

  FileDescriptor file_;
  std::string path_;  // of the file to be removed, else empty
  std::int64_t position_ = 0;
  AVIOContext* context_ = nullptr;
};

}  // namespace kestrivane

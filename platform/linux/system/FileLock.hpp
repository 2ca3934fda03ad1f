// A lock between processes: an empty file that one of them holds with flock(2). It ends with the
// process, however that ends; the file stays.
//
// Thread-safety: none; two locks in one process exclude each other as those of two processes do.
// Ownership: owns the file's descriptor. Failures are thrown as `std::system_error`.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane {

class FileLock {
 public:
  /// Waits until nobody else holds the lock. Makes the file if it is not there; its folder exists.
  static FileLock take(const std::string& path);

  /// Nothing if somebody else holds the lock.
  static std::optional<FileLock> tryTake(const std::string& path);

 private:
  explicit FileLock(FileDescriptor file) : file_(std::move(file)) {}

  FileDescriptor file_;
};

}  // namespace kestrivane

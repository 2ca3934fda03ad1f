// The versions of files, which tell whether the same file, unchanged, still stands under a name.
//
// Thread-safety: a value; the functions may be called from any thread. Failures are thrown as
// `std::system_error`.
#pragma once

#include <string>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/FileManager.hpp"
#include "platform/linux/FileDescriptor.hpp"
#include "platform/linux/system/SystemCall.hpp"

namespace kestrivane {

/// The time of change is not part of a version, as a rename sets it.
inline FileVersion versionOf(const struct stat& status) {
  return {.device = status.st_dev,
          .inode = status.st_ino,
          .size = status.st_size,
          .modifiedSeconds = status.st_mtim.tv_sec,
          .modifiedNanoseconds = status.st_mtim.tv_nsec};
}

inline FileVersion versionOf(const FileDescriptor& file) {
  struct stat status;
  checked(fstat(file.get(), &status));
  return versionOf(status);
}

/// The version of the item `name` in the open directory `folder`.
inline FileVersion versionAt(int folder, const std::string& name) {
  struct stat status;
  checked(fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW));
  return versionOf(status);
}

}  // namespace kestrivane

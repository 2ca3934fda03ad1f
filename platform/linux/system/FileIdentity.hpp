// Tells whether the same file, unchanged, still stands under a name.
//
// Thread-safety: a value; the functions may be called from any thread. Failures are thrown as
// `std::system_error`.
#pragma once

#include <cstdint>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/FileDescriptor.hpp"
#include "platform/linux/system/SystemCall.hpp"

namespace kestrivane {

/// Of a symbolic link: the link itself. The time of change is not part of it, as a rename sets it.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  std::int64_t modifiedSeconds = 0;
  std::int64_t modifiedNanoseconds = 0;

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

inline FileIdentity identityOf(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
          status.st_mtim.tv_nsec};
}

inline FileIdentity identityOf(const FileDescriptor& file) {
  struct stat status;
  checked(fstat(file.get(), &status));
  return identityOf(status);
}

/// The identity of the item `name` in the open directory `folder`.
inline FileIdentity identityAt(int folder, const std::string& name) {
  struct stat status;
  checked(fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW));
  return identityOf(status);
}

}  // namespace kestrivane

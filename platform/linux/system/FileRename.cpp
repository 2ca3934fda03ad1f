#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/FileRename.hpp"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane {
namespace {

/// True for the `errno` of a file system without hard links, or of a file that may not get one.
bool isLinkRefused(int errnoValue) {
  return errnoValue == EPERM || errnoValue == EOPNOTSUPP || errnoValue == ENOSYS ||
         errnoValue == EMLINK;
}

/// For files. link(2) never overwrites; a crash leaves both names.
bool renameByLink(const std::string& source, const std::string& destination) {
  if (link(source.c_str(), destination.c_str()) != 0) return false;
  if (unlink(source.c_str()) == 0) return true;
  const int error = errno;
  unlink(destination.c_str());
  errno = error;
  return false;
}

/// Takes the name with an empty file, which fails if something is there, and renames over that.
bool renameFileOverPlaceholder(const std::string& source, const std::string& destination) {
  const FileDescriptor placeholder(
      open(destination.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600));
  if (!placeholder) return false;
  if (std::rename(source.c_str(), destination.c_str()) == 0) return true;
  const int error = errno;
  // Somebody may have put a file of their own there meanwhile; only ours is removed.
  struct stat ours;
  struct stat there;
  if (fstat(placeholder.get(), &ours) == 0 && lstat(destination.c_str(), &there) == 0 &&
      ours.st_dev == there.st_dev && ours.st_ino == there.st_ino && there.st_size == 0) {
    unlink(destination.c_str());
  }
  errno = error;
  return false;
}

/// The same for a directory; both rename(2) and rmdir(2) spare one that is not empty.
bool renameDirectoryOverPlaceholder(const std::string& source, const std::string& destination) {
  if (mkdir(destination.c_str(), 0700) != 0) return false;
  if (std::rename(source.c_str(), destination.c_str()) == 0) return true;
  const int error = errno;
  rmdir(destination.c_str());
  errno = error;
  return false;
}

}  // namespace

bool isRenameFlagUnknown(int errnoValue) {
  return errnoValue == EINVAL || errnoValue == ENOSYS || errnoValue == EOPNOTSUPP;
}

bool renameWithoutReplacing(const std::string& source, const std::string& destination) {
  if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, destination.c_str(), RENAME_NOREPLACE) == 0)
    return true;
  if (!isRenameFlagUnknown(errno)) return false;

  struct stat status;
  if (lstat(source.c_str(), &status) != 0) return false;
  if (S_ISDIR(status.st_mode)) return renameDirectoryOverPlaceholder(source, destination);
  if (renameByLink(source, destination)) return true;
  return isLinkRefused(errno) && renameFileOverPlaceholder(source, destination);
}

}  // namespace kestrivane

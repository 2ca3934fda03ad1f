#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/FileLock.hpp"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>

#include "platform/linux/system/SystemCall.hpp"

namespace kestrivane {
namespace {

FileDescriptor openLockFile(const std::string& path) {
  return FileDescriptor(checked(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)));
}

}  // namespace

FileLock FileLock::take(const std::string& path) {
  FileDescriptor file = openLockFile(path);
  while (flock(file.get(), LOCK_EX) != 0)
    if (errno != EINTR) throwSystemError(errno);
  return FileLock(std::move(file));
}

std::optional<FileLock> FileLock::tryTake(const std::string& path) {
  FileDescriptor file = openLockFile(path);
  if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) return FileLock(std::move(file));
  if (errno != EWOULDBLOCK) throwSystemError(errno);
  return std::nullopt;
}

}  // namespace kestrivane

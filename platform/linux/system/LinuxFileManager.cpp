#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/LinuxFileManager.hpp"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include "platform/linux/FileDescriptor.hpp"
#include "platform/linux/system/FileRename.hpp"
#include "platform/linux/system/FileReplacement.hpp"
#include "platform/linux/system/FileVersionOf.hpp"
#include "platform/linux/system/PosixError.hpp"

namespace kestrivane {

ItemKind LinuxFileManager::kindOfItem(const FileURL& url) const {
  struct stat status;
  if (stat(url.path().c_str(), &status) != 0) return ItemKind::none;
  return S_ISDIR(status.st_mode) ? ItemKind::directory : ItemKind::file;
}

FileURL LinuxFileManager::resolvingSymbolicLinks(const FileURL& url) const {
  std::error_code error;
  const std::filesystem::path resolved = std::filesystem::canonical(url.path(), error);
  return error ? url : FileURL(resolved.native());
}

bool LinuxFileManager::hasRoom(const FileURL& folder) const {
  constexpr off_t megabyte = 1 << 20;
  const FileDescriptor file(open(folder.path().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  if (file) {
    const int error = posix_fallocate(file.get(), 0, megabyte);
    return error != ENOSPC && error != EDQUOT;
  }
  // Not every file system knows files without a name.
  struct statvfs status;
  return statvfs(folder.path().c_str(), &status) != 0 ||
         status.f_bavail * status.f_frsize >= static_cast<std::uint64_t>(megabyte);
}

void LinuxFileManager::moveItem(const FileURL& source, const FileURL& destination) {
  if (!renameWithoutReplacing(source.path(), destination.path()))
    throw posixError(errno, FileOperation::move, source);
}

FileVersion LinuxFileManager::versionOfItem(const FileURL& url) const {
  struct stat status;
  if (lstat(url.path().c_str(), &status) != 0) return {};
  return versionOf(status);
}

void LinuxFileManager::replaceItem(const FileURL& original, const FileURL& replacement,
                                   const FileVersion& expected) {
  replaceFile(original, replacement, expected);
}

FileURL LinuxFileManager::temporaryDirectory() {
  return temporaryDirectory_.url();
}

}  // namespace kestrivane

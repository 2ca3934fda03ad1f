#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/LinuxSecurityScopedBookmarks.hpp"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/FileDescriptor.hpp"
#include "platform/linux/system/FolderBookmark.hpp"
#include "platform/linux/system/PosixError.hpp"

namespace kestrivane {
namespace {

/// Throws if there is no directory. Needs no permission on the directory itself.
FolderIdentity identityOf(const FileURL& folder) {
  const FileDescriptor opened(open(folder.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  struct statx status {};
  struct statfs fileSystem {};
  if (!opened || statx(opened.get(), "", AT_EMPTY_PATH, STATX_INO | STATX_BTIME, &status) != 0 ||
      fstatfs(opened.get(), &fileSystem) != 0) {
    throw posixError(errno, FileOperation::findFolder, folder);
  }
  FolderIdentity identity{.inode = status.stx_ino};
  static_assert(sizeof identity.fileSystem == sizeof fileSystem.f_fsid);
  std::memcpy(&identity.fileSystem, &fileSystem.f_fsid, sizeof identity.fileSystem);
  if ((status.stx_mask & STATX_BTIME) != 0)
    identity.birth = BirthTime{status.stx_btime.tv_sec, status.stx_btime.tv_nsec};
  return identity;
}

}  // namespace

Data LinuxSecurityScopedBookmarks::bookmarkData(const FileURL& folder) const {
  return FolderBookmark{folder.path(), identityOf(folder)}.encode();
}

ResolvedBookmark LinuxSecurityScopedBookmarks::resolve(std::span<const std::byte> bookmark) const {
  const FolderBookmark decoded = FolderBookmark::decode(bookmark);
  const FileURL url(decoded.path);
  return {.url = url, .isStale = identityOf(url) != decoded.identity};
}

std::optional<FileURL> LinuxSecurityScopedBookmarks::placeOf(
    std::span<const std::byte> bookmark) const try {
  return FileURL(FolderBookmark::decode(bookmark).path);
} catch (const PlatformError&) {
  return std::nullopt;
}

bool LinuxSecurityScopedBookmarks::startAccessing(const FileURL& folder) {
  struct stat status;
  return stat(folder.path().c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         access(folder.path().c_str(), R_OK | X_OK) == 0;
}

void LinuxSecurityScopedBookmarks::stopAccessing(const FileURL&) {}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/LinuxSecurityScopedBookmarks.hpp"

#include <cerrno>
#include <cstring>
#include <utility>

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

Data LinuxSecurityScopedBookmarks::bookmarkData(const FileURL& folder) const try {
  Data bookmark = FolderBookmark{folder.path(), identityOf(folder)}.encode();
  remember(folder, bookmark);
  return bookmark;
} catch (const PlatformError&) {
  const std::lock_guard lock(mutex_);
  const auto known = latest_.find(folder);
  if (known == latest_.end()) throw;
  return known->second;
}

ResolvedBookmark LinuxSecurityScopedBookmarks::resolve(std::span<const std::byte> bookmark) const {
  const FolderBookmark decoded = FolderBookmark::decode(bookmark);
  const FileURL url(decoded.path);
  const FolderIdentity identity = identityOf(url);
  remember(url, {bookmark.begin(), bookmark.end()});
  return {.url = url, .isStale = identity != decoded.identity};
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

void LinuxSecurityScopedBookmarks::remember(const FileURL& folder, Data bookmark) const {
  const std::lock_guard lock(mutex_);
  latest_.insert_or_assign(folder, std::move(bookmark));
}

}  // namespace kestrivane

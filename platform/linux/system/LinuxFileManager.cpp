#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/LinuxFileManager.hpp"

#include <cerrno>

#include <sys/stat.h>

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

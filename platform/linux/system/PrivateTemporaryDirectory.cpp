#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/PrivateTemporaryDirectory.hpp"

#include <cerrno>
#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/system/PosixError.hpp"

namespace kestrivane {
namespace {

bool isDirectory(const char* path) {
  struct stat status;
  return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

std::string systemTemporaryFolder() {
  const char* const variable = std::getenv("TMPDIR");
  return variable != nullptr && *variable == '/' && isDirectory(variable) ? variable : "/tmp";
}

/// True for a directory that only this user can enter or change. A link to one does not count.
bool isPrivate(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == geteuid() && (status.st_mode & 07777) == 0700;
}

}  // namespace

PrivateTemporaryDirectory::~PrivateTemporaryDirectory() {
  if (!ownFolder_.empty()) rmdir(ownFolder_.c_str());
}

FileURL PrivateTemporaryDirectory::url() {
  const std::lock_guard lock(mutex_);
  if (!ownFolder_.empty() && isPrivate(ownFolder_)) return FileURL(ownFolder_);

  // Once the folder is known to be private its name is safe: in a sticky folder nobody else can
  // rename or remove it.
  const FileURL usual = FileURL(systemTemporaryFolder())
                            .appendingPathComponent("kestrivane-" + std::to_string(geteuid()));
  if (mkdir(usual.path().c_str(), 0700) == 0 || errno == EEXIST) {
    if (isPrivate(usual.path())) return usual;
    std::string folder = usual.path() + "-XXXXXX";
    if (mkdtemp(folder.data()) != nullptr) return FileURL(ownFolder_ = folder);
  }
  throw posixError(errno, FileOperation::makeTemporaryDirectory, usual);
}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/DefaultsFile.hpp"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/UUID.hpp"
#include "platform/linux/system/ConfigurationFolder.hpp"
#include "platform/linux/system/FileContents.hpp"
#include "platform/linux/system/FileVersionOf.hpp"
#include "platform/linux/system/SystemCall.hpp"

namespace kestrivane {
namespace {

FileURL resolved(const FileURL& url) {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::weakly_canonical(url.path(), error);
  return error ? url : FileURL(path.native());
}

/// Brings the names in the folder to the disk. What has been renamed by then is not undone, so a
/// failure is not reported.
void flushFolder(const FileURL& folder) {
  const FileDescriptor opened(open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  fsync(opened.get());
}

}  // namespace

DefaultsFile::DefaultsFile(const FileURL& url) : url_(resolved(url)) {}

FileLock DefaultsFile::lock() const {
  makeFolder(url_.deletingLastPathComponent());
  return FileLock::take(url_.path() + ".lock");
}

std::string DefaultsFile::read() {
  FileDescriptor file(open(url_.path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!file && errno != ENOENT && errno != ENOTDIR) throwSystemError(errno);
  if (!file) {
    file_.reset();
    version_ = {};
    return {};
  }
  struct stat status;
  checked(fstat(file.get(), &status));
  version_ = versionOf(status);
  file_ = std::move(file);
  if (!S_ISREG(status.st_mode)) throwSystemError(EOPNOTSUPP);
  return readAll(file_.get());
}

bool DefaultsFile::hasChanged() const {
  return currentVersion() != version_;
}

void DefaultsFile::replace(std::string_view content) {
  // The lock makes the name ours; what a process that was killed has left there is overwritten.
  const std::string staging = url_.path() + ".new";
  FileDescriptor file(
      checked(open(staging.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600)));
  try {
    writeAll(file.get(), content);
    checked(fchmod(file.get(), 0600));
    checked(fsync(file.get()));
    checked(rename(staging.c_str(), url_.path().c_str()));
  } catch (const std::system_error&) {
    unlink(staging.c_str());
    throw;
  }
  version_ = versionOf(file);
  file_ = std::move(file);
  flushFolder(url_.deletingLastPathComponent());
}

FileURL DefaultsFile::setAside() {
  const FileURL aside(url_.path() + ".damaged-" + makeUUIDString());
  checked(rename(url_.path().c_str(), aside.path().c_str()));
  return aside;
}

FileVersion DefaultsFile::currentVersion() const {
  struct stat status;
  return stat(url_.path().c_str(), &status) == 0 ? versionOf(status) : FileVersion{};
}

}  // namespace kestrivane

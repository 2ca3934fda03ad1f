#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/FileReplacement.hpp"

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/FileDescriptor.hpp"
#include "platform/linux/system/FileContents.hpp"
#include "platform/linux/system/FileRename.hpp"
#include "platform/linux/system/FileVersionOf.hpp"
#include "platform/linux/system/PosixError.hpp"
#include "platform/linux/system/StagedFile.hpp"
#include "platform/linux/system/SystemCall.hpp"

namespace kestrivane {
namespace {

/// Opens a regular file to read; never waits, whatever stands there.
FileDescriptor openRegularFile(int folder, const std::string& path, int flags) {
  FileDescriptor file(
      checked(openat(folder, path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | flags)));
  struct stat status;
  checked(fstat(file.get(), &status));
  if (S_ISDIR(status.st_mode)) throwSystemError(EISDIR);
  if (!S_ISREG(status.st_mode)) throwSystemError(EOPNOTSUPP);
  return file;
}

/// Gives `fresh` the old file's attributes and brings both content and attributes to the disk.
void finish(const FileDescriptor& fresh, const FileDescriptor& old) {
  copyAttributes(old.get(), fresh.get());
  checked(fsync(fresh.get()));
}

/// Copies `source` beside the original. The copy has no name until it is complete, where the file
/// system can do that, so that a crash leaves no part of it.
void stageCopy(const FileDescriptor& source, const FileDescriptor& old, int folder,
               const StagedFile& staged) {
  FileDescriptor copy(openat(folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
  const bool isNameless = static_cast<bool>(copy);
  if (!isNameless) {
    copy = FileDescriptor(
        checked(openat(folder, staged.name(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600)));
  }
  copyContent(source.get(), copy.get());
  finish(copy, old);
  if (!isNameless) return;
  const std::string descriptorPath = "/proc/self/fd/" + std::to_string(copy.get());
  checked(linkat(AT_FDCWD, descriptorPath.c_str(), folder, staged.name(), AT_SYMLINK_FOLLOW));
}

/// Makes the new file stand complete under its staging name: moves the replacement there if it is
/// on the same file system, else copies it. True when it was copied.
bool stage(const FileURL& replacement, const FileDescriptor& old, int folder, StagedFile& staged) {
  const FileDescriptor fresh = openRegularFile(AT_FDCWD, replacement.path(), O_NOFOLLOW);
  const FileVersion freshVersion = versionOf(fresh);
  const FileVersion oldVersion = versionOf(old);
  if (freshVersion.device == oldVersion.device) {
    // A file is not replaced by itself: the end would be to remove it.
    if (freshVersion.inode == oldVersion.inode) throwSystemError(EINVAL);
    finish(fresh, old);
    if (staged.takeIn(replacement.path())) return false;
    if (errno != EXDEV) throwSystemError(errno);
  }
  stageCopy(fresh, old, folder, staged);
  return true;
}

/// Brings the names in the folder to the disk. Some file systems do that on their own and refuse.
void flushFolder(int folder) {
  if (fsync(folder) != 0 && errno != EINVAL && errno != EOPNOTSUPP) throwSystemError(errno);
}

bool exchange(int folder, const std::string& name, const StagedFile& staged) {
  return renameat2(folder, staged.name(), folder, name.c_str(), RENAME_EXCHANGE) == 0;
}

/// Undoes an exchange. The staging name then names the new file again, or is not ours any more.
void exchangeBack(int folder, const std::string& name, StagedFile& staged) {
  if (exchange(folder, name, staged)) return;
  // The name has gone meanwhile: the file that was taken gets it back, if nothing else has it.
  renameat2(folder, staged.name(), folder, name.c_str(), RENAME_NOREPLACE);
  staged.release();
}

/// For file systems that cannot exchange names.
void renameOver(int folder, const std::string& name, const FileVersion& expected,
                StagedFile& staged) {
  if (versionAt(folder, name) != expected) throwSystemError(ESTALE);
  checked(renameat(folder, staged.name(), folder, name.c_str()));
  staged.release();
  // What is done cannot be undone here, so a failure to flush is no failure of the replacement.
  fsync(folder);
}

/// Makes `name`, if it still names the file that is `expected`, name the staged one.
void commit(int folder, const std::string& name, const FileVersion& expected, StagedFile& staged) {
  if (!exchange(folder, name, staged)) {
    if (!isRenameFlagUnknown(errno)) throwSystemError(errno);
    return renameOver(folder, name, expected, staged);
  }
  try {
    if (versionAt(folder, staged.name()) != expected) throwSystemError(ESTALE);
    flushFolder(folder);
  } catch (const std::system_error&) {
    exchangeBack(folder, name, staged);
    throw;
  }
  staged.remove();  // the old file
}

}  // namespace

void replaceFile(const FileURL& original, const FileURL& replacement,
                 const FileVersion& expected) try {
  const FileDescriptor folder(checked(open(original.deletingLastPathComponent().path().c_str(),
                                           O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
  const std::string name = original.lastPathComponent();
  if (versionAt(folder.get(), name) != expected) throwSystemError(ESTALE);
  const FileDescriptor old = openRegularFile(folder.get(), name, 0);

  StagedFile staged(folder.get());
  const bool isCopied = stage(replacement, old, folder.get(), staged);
  commit(folder.get(), name, expected, staged);
  // The original is replaced even if the source of the copy should refuse to go.
  if (isCopied) unlink(replacement.path().c_str());
} catch (const std::system_error& error) {
  throw posixError(error.code().value(), FileOperation::replace, original);
}

}  // namespace kestrivane

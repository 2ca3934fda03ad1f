#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/FileContents.hpp"

#include <cerrno>
#include <cstddef>
#include <vector>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/linux/system/SystemCall.hpp"

namespace kestrivane {
namespace {

constexpr const char* accessControlList = "system.posix_acl_access";
constexpr std::size_t bufferSize = 256 * 1024;

/// The `errno` of an attribute that this process may not or the file system cannot keep. File
/// systems in user space do not know some of the calls at all (`ENOSYS`); some others take the
/// value for an impossible one (`EINVAL`).
bool isRefused(int errnoValue) {
  switch (errnoValue) {
    case EPERM:
    case EACCES:
    case EOPNOTSUPP:
    case ENOSYS:
    case EINVAL:
      return true;
    default:
      return false;
  }
}

bool vouchesForContent(std::string_view attribute) {
  return attribute == "security.capability" || attribute == "security.ima" ||
         attribute == "security.evm";
}

/// Bytes that the kernel copied on its own, sharing blocks where the file system can. Stops early
/// where it cannot go on.
off_t copyInKernel(int from, int to, off_t size) {
  off_t copied = 0;
  while (copied < size) {
    const ssize_t step =
        copy_file_range(from, nullptr, to, nullptr, static_cast<std::size_t>(size - copied), 0);
    if (step <= 0) break;
    copied += step;
  }
  return copied;
}

/// The next bytes of the file, in `buffer`; none at its end.
std::string_view readSome(int file, std::vector<char>& buffer) {
  while (true) {
    const ssize_t count = read(file, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    return {buffer.data(), static_cast<std::size_t>(checked(count))};
  }
}

/// Copies from the current position to the end; returns the number of bytes.
off_t copyByHand(int from, int to) {
  std::vector<char> buffer(bufferSize);
  off_t copied = 0;
  for (std::string_view part; !(part = readSome(from, buffer)).empty();) {
    writeAll(to, part);
    copied += static_cast<off_t>(part.size());
  }
  return copied;
}

void copyOwner(const struct stat& from, int to) {
  if (fchown(to, from.st_uid, from.st_gid) == 0) return;
  if (!isRefused(errno)) throwSystemError(errno);
  // Not ours to give away; the group may still be one of ours. If not, it stays as it is.
  [[maybe_unused]] const int result = fchown(to, static_cast<uid_t>(-1), from.st_gid);
}

/// The names of all extended attributes.
std::vector<std::string> attributeNames(int file) {
  std::string list;
  ssize_t length = 0;
  do {
    const ssize_t capacity = flistxattr(file, nullptr, 0);
    if (capacity < 0 && isRefused(errno)) return {};
    list.resize(static_cast<std::size_t>(checked(capacity)));
    length = flistxattr(file, list.data(), list.size());
  } while (length < 0 && errno == ERANGE);  // one was added between the two calls
  list.resize(static_cast<std::size_t>(checked(length)));

  std::vector<std::string> names;
  for (std::size_t start = 0; start < list.size(); start = list.find('\0', start) + 1)
    names.emplace_back(list.c_str() + start);
  return names;
}

void copyAttribute(int from, int to, const std::string& name) {
  // The largest value that Linux has (XATTR_SIZE_MAX).
  std::vector<char> value(64 * 1024);
  const ssize_t length = fgetxattr(from, name.c_str(), value.data(), value.size());
  if (length < 0) {
    if (errno == ENODATA || isRefused(errno)) return;
    throwSystemError(errno);
  }
  if (fsetxattr(to, name.c_str(), value.data(), static_cast<std::size_t>(length), 0) != 0 &&
      !isRefused(errno)) {
    throwSystemError(errno);
  }
}

}  // namespace

std::string readAll(int file) {
  std::vector<char> buffer(bufferSize);
  std::string content;
  for (std::string_view part; !(part = readSome(file, buffer)).empty();)
    content += part;
  return content;
}

void writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    bytes.remove_prefix(static_cast<std::size_t>(checked(written)));
  }
}

void copyContent(int from, int to) {
  struct stat status;
  checked(fstat(from, &status));
  off_t copied = copyInKernel(from, to, status.st_size);
  if (copied < status.st_size) copied += copyByHand(from, to);
  if (copied != status.st_size) throwSystemError(EIO);
}

void copyAttributes(int from, int to) {
  struct stat status;
  checked(fstat(from, &status));
  copyOwner(status, to);
  // A list that came from the folder's default would otherwise widen the permissions.
  if (fremovexattr(to, accessControlList) != 0 && errno != ENODATA && !isRefused(errno))
    throwSystemError(errno);
  for (const std::string& name : attributeNames(from))
    if (!vouchesForContent(name)) copyAttribute(from, to, name);
  // Last, as a change of owner clears some of the bits. Some network and FAT disks have no modes.
  if (fchmod(to, status.st_mode & 0777) != 0 && !isRefused(errno)) throwSystemError(errno);
}

}  // namespace kestrivane

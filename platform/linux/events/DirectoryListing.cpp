#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/DirectoryListing.hpp"

#include <cstring>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace kestrivane {

namespace {

bool isDirectory(const FileDescriptor& parent, const char* name, unsigned char type) {
  if (type != DT_UNKNOWN) return type == DT_DIR;
  struct stat item {};
  return ::fstatat(parent.get(), name, &item, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(item.st_mode);
}

}  // namespace

void DirectoryListing::forEach(const FileDescriptor& directory, const Visitor& visit) {
  for (;;) {
    const ssize_t length = ::getdents64(directory.get(), buffer_.get(), bufferSize);
    if (length <= 0) return;
    for (std::size_t offset = 0; offset < static_cast<std::size_t>(length);) {
      const auto* const entry = reinterpret_cast<const dirent64*>(buffer_.get() + offset);
      offset += entry->d_reclen;
      const char* const name = entry->d_name;
      if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
      visit(name, isDirectory(directory, name, entry->d_type));
    }
  }
}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/NameResolver.hpp"

#include <sched.h>
#include <unistd.h>

namespace kestrivane {

NameResolver::NameResolver() : ownWorkingDirectory_(::unshare(CLONE_FS) == 0) {}

void NameResolver::enter(const FileDescriptor& directory) {
  if (ownWorkingDirectory_ && ::fchdir(directory.get()) == 0) {
    inside_ = true;
    return;
  }
  leave();
  prefix_ = "/proc/self/fd/" + std::to_string(directory.get()) + '/';
}

void NameResolver::leave() {
  // A working directory keeps its file system from being unmounted.
  if (inside_ && ::chdir("/") == 0) inside_ = false;
}

const char* NameResolver::path(const char* name) {
  if (inside_) return name;
  path_ = prefix_ + name;
  return path_.c_str();
}

}  // namespace kestrivane

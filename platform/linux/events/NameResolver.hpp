// Names a directory's entries to system calls that know no directory descriptors, such as
// inotify_add_watch, without spelling out a path that others may rename meanwhile.
//
// The calling thread gets a working directory of its own, apart from the process's; where that is
// forbidden (some containers), names lead over /proc, a little slower. While no directory is
// entered, none is kept busy. Thread-safety: belongs to the thread that made it. Ownership: none.
#pragma once

#include <string>

#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane {

class NameResolver {
 public:
  NameResolver();
  NameResolver(const NameResolver&) = delete;
  NameResolver& operator=(const NameResolver&) = delete;
  ~NameResolver() { leave(); }

  /// Names belong to `directory` from now on; it stays open until `leave`.
  void enter(const FileDescriptor& directory);
  void leave();

  /// A path for the entry `name`, or for the directory itself with ".". Valid until the next call.
  const char* path(const char* name);

 private:
  bool ownWorkingDirectory_;
  bool inside_ = false;
  std::string prefix_;
  std::string path_;
};

}  // namespace kestrivane

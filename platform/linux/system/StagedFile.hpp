// A file under a staging name in some folder, for as long as it takes to put it in its place.
//
// Thread-safety: none. Ownership: owns the staging name, not the folder's descriptor, which
// outlives it. Unless it was removed or released before, a file that was taken in goes back to
// where it came from and any other is removed.
#pragma once

#include <cstdio>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "platform/UUID.hpp"
#include "platform/linux/StagingName.hpp"

namespace kestrivane {

class StagedFile {
 public:
  /// Makes up a fresh name; nothing stands under it yet.
  explicit StagedFile(int folder)
      : folder_(folder), name_(std::string(stagingPrefix) + makeUUIDString()) {}
  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;
  ~StagedFile() {
    if (released_) return;
    if (origin_.empty() || renameat(folder_, name(), AT_FDCWD, origin_.c_str()) != 0) remove();
  }

  const char* name() const { return name_.c_str(); }

  /// Moves the file at `path` under the staging name; false, with `errno` set, if that failed.
  bool takeIn(const std::string& path) {
    if (renameat(AT_FDCWD, path.c_str(), folder_, name()) != 0) return false;
    origin_ = path;
    return true;
  }

  /// Removes whatever stands under the name now.
  void remove() {
    unlinkat(folder_, name(), 0);
    released_ = true;
  }

  /// Leaves the name, and what it names, to others.
  void release() { released_ = true; }

 private:
  const int folder_;
  const std::string name_;
  std::string origin_;  ///< empty unless the file was taken in
  bool released_ = false;
};

}  // namespace kestrivane

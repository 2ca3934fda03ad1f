// The user's own folder inside the system's temporary folder.
//
// It is $TMPDIR/kestrivane-<uid> (/tmp where TMPDIR is not set): a real directory, the user's, with
// mode 0700. It stays for the next start. If something else has that name, this object makes a
// folder of its own and removes it at the end if it is empty. Thread-safety: may be used from any
// thread.
#pragma once

#include <mutex>
#include <string>

#include "platform/FileURL.hpp"

namespace kestrivane {

class PrivateTemporaryDirectory {
 public:
  PrivateTemporaryDirectory() = default;
  PrivateTemporaryDirectory(const PrivateTemporaryDirectory&) = delete;
  PrivateTemporaryDirectory& operator=(const PrivateTemporaryDirectory&) = delete;
  ~PrivateTemporaryDirectory();

  /// The folder, made anew if somebody has cleaned it away. Throws `PlatformError`.
  FileURL url();

 private:
  std::mutex mutex_;
  std::string ownFolder_;  ///< empty unless the usual name was taken
};

}  // namespace kestrivane

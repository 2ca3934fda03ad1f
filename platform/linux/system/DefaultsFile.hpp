// The file that preferences are kept in: read whole, replaced whole.
//
// A replacement is flushed and put in place by one rename, so that every process reads either the
// old content or the new one. Whoever changes the file holds its lock and reads it anew first.
// Thread-safety: none. Ownership: owns descriptors only. Failures are thrown as
// `std::system_error`.
#pragma once

#include <string>
#include <string_view>

#include "platform/FileManager.hpp"
#include "platform/FileURL.hpp"
#include "platform/linux/FileDescriptor.hpp"
#include "platform/linux/system/FileLock.hpp"

namespace kestrivane {

class DefaultsFile {
 public:
  /// A symbolic link at `url` stays one: what it leads to is replaced.
  explicit DefaultsFile(const FileURL& url);

  const FileURL& url() const { return url_; }

  /// Waits for the lock. Makes the folder, for the user alone, if it is not there.
  FileLock lock() const;

  /// The content; empty when there is no file.
  std::string read();

  /// Whether there is another content than what was read or written last.
  bool hasChanged() const;

  /// To be called under the lock. The file is the user's alone (mode 0600).
  void replace(std::string_view content);

  /// Gives the file another name, which is returned. To be called under the lock.
  FileURL setAside();

 private:
  FileVersion currentVersion() const;

  const FileURL url_;
  FileVersion version_;
  FileDescriptor file_;  ///< of that version; open, so that no other file gets its inode number
};

}  // namespace kestrivane

// What the program asks of the file system.
//
// Thread-safety: every operation may be called from any thread. Failures are thrown as
// `PlatformError` with a description for the user.
#pragma once

#include "platform/FileURL.hpp"

namespace kestrivane {

enum class ItemKind { none, file, directory };

class FileManager {
 public:
  FileManager() = default;
  FileManager(const FileManager&) = delete;
  FileManager& operator=(const FileManager&) = delete;
  virtual ~FileManager() = default;

  /// What is at `url`, symbolic links followed; `none` where nothing is or it cannot be asked.
  /// Everything that is no directory is a `file`.
  virtual ItemKind kindOfItem(const FileURL& url) const = 0;

  /// Renames or moves the item. Never overwrites: throws if something is at `destination`.
  virtual void moveItem(const FileURL& source, const FileURL& destination) = 0;

  /// Puts the file at `replacement` in the place of the one at `original`, which must exist; the
  /// name, permissions, owner and extended attributes of `original` stay. At every moment
  /// `original` names either the old file or the complete new one, also after a power cut.
  /// Afterwards nothing is at `replacement`; after a failure both files are as they were. May
  /// block: it flushes, and copies when the two lie on different file systems.
  virtual void replaceItem(const FileURL& original, const FileURL& replacement) = 0;

  /// The user's own temporary folder; nobody else can read it or write to it.
  /// Throws if there is none.
  virtual FileURL temporaryDirectory() = 0;
};

}  // namespace kestrivane

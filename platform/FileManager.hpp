// What the program asks of the file system.
//
// Thread-safety: every operation may be called from any thread. Failures are thrown as
// `PlatformError` with a description for the user.
#pragma once

#include <cstdint>

#include "platform/FileURL.hpp"

namespace kestrivane {

enum class ItemKind { none, file, directory };

/// Which file stands under a name, and in which state: a value that differs once another file takes
/// the name or the content is written to. All zero: nothing is there.
struct FileVersion {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;                 ///< bytes
  std::int64_t modifiedSeconds = 0;      ///< since 1970
  std::int64_t modifiedNanoseconds = 0;  ///< of that second

  friend bool operator==(const FileVersion&, const FileVersion&) = default;
};

class FileManager {
 public:
  FileManager() = default;
  FileManager(const FileManager&) = delete;
  FileManager& operator=(const FileManager&) = delete;
  virtual ~FileManager() = default;

  /// What is at `url`, symbolic links followed; `none` where nothing is or it cannot be asked.
  /// Everything that is no directory is a `file`.
  virtual ItemKind kindOfItem(const FileURL& url) const = 0;

  /// The same place by a path without symbolic links, "." and ".."; `url` itself where that cannot
  /// be found.
  virtual FileURL resolvingSymbolicLinks(const FileURL& url) const = 0;

  /// Whether another megabyte can be written to `folder`. Where it cannot, a program that overlooks
  /// failing writes may have left half a file there.
  virtual bool hasRoom(const FileURL& folder) const = 0;

  /// Renames or moves the item. Never overwrites: throws if something is at `destination`.
  virtual void moveItem(const FileURL& source, const FileURL& destination) = 0;

  /// The version of the item at `url`; of a symbolic link, that of the link itself.
  virtual FileVersion versionOfItem(const FileURL& url) const = 0;

  /// Puts the file at `replacement` in the place of the one at `original`, which must exist; the
  /// name, permissions, owner and extended attributes of `original` stay. At every moment
  /// `original` names either the old file or the complete new one, also after a power cut.
  /// Afterwards nothing is at `replacement`; after a failure the content of both is as it was.
  /// Throws if `original` is not in the state `expected` any more: what somebody has saved
  /// meanwhile is never overwritten. May block: it flushes, and copies when the two lie on
  /// different file systems.
  virtual void replaceItem(const FileURL& original, const FileURL& replacement,
                           const FileVersion& expected) = 0;

  /// The user's own temporary folder; nobody else can read it or write to it.
  /// Throws if there is none.
  virtual FileURL temporaryDirectory() = 0;
};

}  // namespace kestrivane

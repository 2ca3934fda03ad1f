// What a bookmark of a folder says: where it was, and which one it was. As bytes it carries a
// version and a checksum.
//
// Thread-safety and ownership: a value.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/Data.hpp"

namespace kestrivane {

/// When a folder was made.
struct BirthTime {
  std::int64_t seconds = 0;  ///< since 1970
  std::uint32_t nanoseconds = 0;

  friend bool operator==(const BirthTime&, const BirthTime&) = default;
};

/// Tells a folder from all others, also after a restart of the computer.
struct FolderIdentity {
  std::uint64_t fileSystem = 0;      ///< statfs(2)'s f_fsid: device numbers change with each start
  std::uint64_t inode = 0;           ///< given to another folder once this one is deleted
  std::optional<BirthTime> birth{};  ///< where the file system knows it

  friend bool operator==(const FolderIdentity&, const FolderIdentity&) = default;
};

struct FolderBookmark {
  std::string path;  ///< absolute, without NUL
  FolderIdentity identity;

  Data encode() const;

  /// Throws `PlatformError` for bytes that are damaged (EBADMSG), or whose version is later than
  /// those known here (ENOTSUP).
  static FolderBookmark decode(std::span<const std::byte> bytes);

  friend bool operator==(const FolderBookmark&, const FolderBookmark&) = default;
};

}  // namespace kestrivane

// Bookmarks on Linux: a folder is named by its path; whether it is still the same folder is known
// by its identity. Access is what the permissions grant.
//
// Thread-safety: every operation may be called from any thread. Ownership: holds nothing; an access
// that was started takes nothing to keep.
#pragma once

#include "platform/SecurityScopedBookmarks.hpp"

namespace kestrivane {

class LinuxSecurityScopedBookmarks final : public SecurityScopedBookmarks {
 public:
  /// Throws when nothing is at the path, or no directory.
  Data bookmarkData(const FileURL& folder) const override;

  /// Throws as `bookmarkData` does, and for bytes that are no bookmark. Stale when another
  /// directory is at the path now.
  ResolvedBookmark resolve(std::span<const std::byte> bookmark) const override;

  std::optional<FileURL> placeOf(std::span<const std::byte> bookmark) const override;

  /// False unless the folder is a directory that can be listed and entered.
  bool startAccessing(const FileURL& folder) override;
  void stopAccessing(const FileURL& folder) override;
};

}  // namespace kestrivane

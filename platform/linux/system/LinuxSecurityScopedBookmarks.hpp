// Bookmarks on Linux: a folder is named by its path; whether it is still the same folder is known
// by its identity. Access is what the permissions grant.
//
// Thread-safety: every operation may be called from any thread. Ownership: keeps the latest
// bookmark of each folder that it has met; an access that was started takes nothing to keep.
#pragma once

#include <mutex>
#include <unordered_map>

#include "platform/SecurityScopedBookmarks.hpp"

namespace kestrivane {

class LinuxSecurityScopedBookmarks final : public SecurityScopedBookmarks {
 public:
  /// Throws when nothing is at the path, or no directory, and the folder was never met here.
  Data bookmarkData(const FileURL& folder) const override;

  /// Throws when nothing is at the path, or no directory, and for bytes that are no bookmark. Stale
  /// when another directory is at the path now.
  ResolvedBookmark resolve(std::span<const std::byte> bookmark) const override;

  std::optional<FileURL> placeOf(std::span<const std::byte> bookmark) const override;

  /// False unless the folder is a directory that can be listed and entered.
  bool startAccessing(const FileURL& folder) override;
  void stopAccessing(const FileURL& folder) override;

 private:
  void remember(const FileURL& folder, Data bookmark) const;

  mutable std::mutex mutex_;
  mutable std::unordered_map<FileURL, Data> latest_;
};

}  // namespace kestrivane

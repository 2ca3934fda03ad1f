// Bookmarks of Foundation with security scope, by which a sandboxed program finds a folder again
// and may enter it.
//
// Thread-safety: every operation may be called from any thread. Ownership: keeps the URL object of
// each folder that was resolved, because the scope hangs on that object and not on the path, until
// the access to the folder is stopped; and the latest bookmark of each folder that it has met.
#pragma once

#include <memory>

#include "platform/SecurityScopedBookmarks.hpp"

namespace kestrivane {

class MacSecurityScopedBookmarks final : public SecurityScopedBookmarks {
 public:
  MacSecurityScopedBookmarks();
  ~MacSecurityScopedBookmarks() override;

  Data bookmarkData(const FileURL& folder) const override;
  ResolvedBookmark resolve(std::span<const std::byte> bookmark) const override;
  std::optional<FileURL> placeOf(std::span<const std::byte> bookmark) const override;
  bool startAccessing(const FileURL& folder) override;
  void stopAccessing(const FileURL& folder) override;

 private:
  class ScopedURLs;
  class LatestBookmarks;

  const std::unique_ptr<ScopedURLs> scopedURLs_;
  const std::unique_ptr<LatestBookmarks> latest_;
};

}  // namespace kestrivane

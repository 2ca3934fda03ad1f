// Bookmarks in memory, of the folders of an `InMemoryFileSystem`, which outlives them.
//
// Thread-safety: none; used on the test's thread. Ownership: owns its records.
#pragma once

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/PlatformError.hpp"
#include "platform/SecurityScopedBookmarks.hpp"
#include "tests/support/InMemoryFileSystem.hpp"

namespace kestrivane::test {

inline Data dataOf(std::string_view text) {
  Data data;
  std::ranges::transform(text, std::back_inserter(data),
                         [](char c) { return static_cast<std::byte>(c); });
  return data;
}

inline std::string textOf(std::span<const std::byte> data) {
  std::string text;
  std::ranges::transform(data, std::back_inserter(text),
                         [](std::byte byte) { return static_cast<char>(byte); });
  return text;
}

/// A bookmark is the text "bookmark of PATH".
class FakeBookmarks final : public SecurityScopedBookmarks {
 public:
  explicit FakeBookmarks(InMemoryFileSystem& fileSystem) : fileSystem_(fileSystem) {}

  static Data of(const std::string& path) { return dataOf(prefix + path); }

  std::set<std::string> stale;         ///< the paths whose bookmarks are stale
  std::set<std::string> inaccessible;  ///< the paths that access to is not granted
  std::set<std::string> unnameable;    ///< the paths that no bookmark can be made of
  std::vector<std::string> accesses;   ///< "start PATH" and "stop PATH", in order

  Data bookmarkData(const FileURL& folder) const override {
    if (unnameable.contains(folder.path())) throw PlatformError(EIO, "No bookmark");
    if (!met_.contains(folder.path())) requireFolder(folder);
    met_.insert(folder.path());
    return of(folder.path());
  }

  ResolvedBookmark resolve(std::span<const std::byte> bookmark) const override {
    const std::optional<FileURL> url = placeOf(bookmark);
    if (!url) throw PlatformError(EBADMSG, "A damaged bookmark");
    requireFolder(*url);
    met_.insert(url->path());
    return {.url = *url, .isStale = stale.contains(url->path())};
  }

  std::optional<FileURL> placeOf(std::span<const std::byte> bookmark) const override {
    const std::string text = textOf(bookmark);
    if (!text.starts_with(prefix)) return std::nullopt;
    return FileURL(text.substr(prefix.size()));
  }

  bool startAccessing(const FileURL& folder) override {
    if (fileSystem_.kindOfItem(folder) != ItemKind::directory ||
        inaccessible.contains(folder.path()))
      return false;
    accesses.push_back("start " + folder.path());
    return true;
  }

  void stopAccessing(const FileURL& folder) override {
    accesses.push_back("stop " + folder.path());
  }

 private:
  inline static const std::string prefix = "bookmark of ";

  void requireFolder(const FileURL& url) const {
    switch (fileSystem_.kindOfItem(url)) {
      case ItemKind::none:
        throw PlatformError(ENOENT, "No folder at " + url.path());
      case ItemKind::file:
        throw PlatformError(ENOTDIR, "A file at " + url.path());
      case ItemKind::directory:
        return;
    }
  }

  InMemoryFileSystem& fileSystem_;
  mutable std::set<std::string> met_;  ///< the paths of folders that bookmarks are known of
};

}  // namespace kestrivane::test

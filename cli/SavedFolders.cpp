#include "cli/SavedFolders.hpp"

#include <algorithm>
#include <filesystem>
#include <span>

#include "cli/CommandLine.hpp"
#include "platform/PlatformError.hpp"
#include "platform/linux/system/FolderBookmark.hpp"
#include "state/BookmarkManager.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

/// Whether the bookmark is one of this folder, under this name up to dots and slashes.
bool names(std::span<const std::byte> bookmark, const FileURL& folder) {
  try {
    const std::string path = FolderBookmark::decode(bookmark).path;
    return path == folder.path() || absoluteFolderPath(path) == folder.path();
  } catch (const PlatformError&) {
    return false;  // damaged: it names nothing
  } catch (const std::filesystem::filesystem_error&) {
    return false;  // what it names cannot be found
  }
}

}  // namespace

std::optional<std::vector<SavedFolders::Entry>> SavedFolders::entries() {
  const auto bookmarks = userDefaults_.dataArrayForKey(BookmarkManager::userDefaultsKey);
  if (!bookmarks) return std::nullopt;
  std::vector<Entry> entries;
  for (const Data& bookmark : *bookmarks) {
    Entry& entry = entries.emplace_back();
    try {
      entry.path = FolderBookmark::decode(bookmark).path;
      if (!bookmarks_.startAccessing(bookmarks_.resolve(bookmark).url)) {
        entry.problem = L10n::choose("You have no permission to read this folder.",
                                     "Нет прав на чтение этой папки.");
      }
    } catch (const PlatformError& error) {
      entry.problem = error.localizedDescription();
    }
  }
  return entries;
}

bool SavedFolders::add(const FileURL& folder) {
  const Data added = bookmarks_.bookmarkData(folder);
  bool isNew = false;
  userDefaults_.updateDataArray(
      BookmarkManager::userDefaultsKey, [&](std::vector<Data>& bookmarks) {
        isNew = std::ranges::none_of(bookmarks,
                                     [&](const Data& bookmark) { return names(bookmark, folder); });
        if (isNew) bookmarks.push_back(added);
      });
  return isNew;
}

bool SavedFolders::remove(const FileURL& folder) {
  std::size_t removed = 0;
  userDefaults_.updateDataArray(
      BookmarkManager::userDefaultsKey, [&](std::vector<Data>& bookmarks) {
        removed =
            std::erase_if(bookmarks, [&](const Data& bookmark) { return names(bookmark, folder); });
      });
  return removed > 0;
}

}  // namespace kestrivane

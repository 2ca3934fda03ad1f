#include "cli/SavedFolders.hpp"

#include <algorithm>
#include <filesystem>

#include "cli/CommandLine.hpp"
#include "platform/PlatformError.hpp"
#include "state/BookmarkManager.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

/// Whether these are names of one folder, up to dots and slashes.
bool isSame(const FileURL& place, const FileURL& folder) try {
  return place == folder || absoluteFolderPath(place.path()) == folder.path();
} catch (const std::filesystem::filesystem_error&) {
  return false;  // nothing is at the place
}

}  // namespace

std::vector<SavedFolders::Entry> SavedFolders::entries() {
  const auto bookmarks = userDefaults_.dataArrayForKey(BookmarkManager::userDefaultsKey);
  std::vector<Entry> entries;
  for (const Data& bookmark : bookmarks.value_or(std::vector<Data>{})) {
    Entry& entry = entries.emplace_back();
    if (const auto place = bookmarks_.placeOf(bookmark)) entry.path = place->path();
    try {
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
                                     [&](const Data& bookmark) { return isOf(bookmark, folder); });
        if (isNew) bookmarks.push_back(added);
      });
  return isNew;
}

bool SavedFolders::remove(const FileURL& folder) {
  std::size_t removed = 0;
  userDefaults_.updateDataArray(
      BookmarkManager::userDefaultsKey, [&](std::vector<Data>& bookmarks) {
        removed =
            std::erase_if(bookmarks, [&](const Data& bookmark) { return isOf(bookmark, folder); });
      });
  return removed > 0;
}

bool SavedFolders::isOf(const Data& bookmark, const FileURL& folder) const {
  const auto place = bookmarks_.placeOf(bookmark);
  return place && isSame(*place, folder);
}

}  // namespace kestrivane

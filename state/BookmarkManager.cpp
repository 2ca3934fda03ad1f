#include "state/BookmarkManager.hpp"

#include <exception>

#include "platform/PlatformError.hpp"

namespace kestrivane {

BookmarkManager::BookmarkManager(UserDefaults& userDefaults, SecurityScopedBookmarks& bookmarks,
                                 UnifiedLog& log)
    : userDefaults_(userDefaults),
      bookmarks_(bookmarks),
      logger_(log.makeLogger(logSubsystem, "BookmarkManager")) {}

std::vector<FileURL> BookmarkManager::save(const std::vector<FileURL>& urls) {
  std::vector<Data> stored;
  std::vector<FileURL> leftOut;
  for (const FileURL& url : urls) {
    try {
      stored.push_back(bookmarks_.bookmarkData(url));
    } catch (const std::exception&) {
      logger_->log(LogLevel::error, "Ошибка создания закладки для " + url.path() + ": " +
                                        localizedDescription(std::current_exception()));
      leftOut.push_back(url);
    }
  }
  userDefaults_.setDataArray(userDefaultsKey, stored);
  return leftOut;
}

std::vector<FileURL> BookmarkManager::load() {
  unresolved_.clear();
  return loadAll().value_or(StoredFolders{}).accessible;
}

std::optional<StoredFolders> BookmarkManager::loadAll() {
  const auto stored = userDefaults_.dataArrayForKey(userDefaultsKey);
  if (!stored) return std::nullopt;
  StoredFolders folders;
  for (const Data& bookmark : *stored)
    resolve(bookmark, folders);
  return folders;
}

void BookmarkManager::resolve(const Data& bookmark, StoredFolders& folders) {
  try {
    const FileURL url = bookmarks_.resolve(bookmark).url;
    unresolved_.erase(bookmark);
    folders.named.push_back(url);
    if (bookmarks_.startAccessing(url)) folders.accessible.push_back(url);
  } catch (const std::exception&) {
    const bool isNews = unresolved_.insert(bookmark).second;
    if (isNews) {
      logger_->log(LogLevel::error,
                   "Ошибка разрешения закладки: " + localizedDescription(std::current_exception()));
    }
    if (const auto place = bookmarks_.placeOf(bookmark)) folders.named.push_back(*place);
  }
}

}  // namespace kestrivane

#include "state/BookmarkManager.hpp"

#include <exception>

#include "platform/PlatformError.hpp"

namespace kestrivane {

BookmarkManager::BookmarkManager(UserDefaults& userDefaults, SecurityScopedBookmarks& bookmarks,
                                 UnifiedLog& log)
    : userDefaults_(userDefaults),
      bookmarks_(bookmarks),
      logger_(log.makeLogger(logSubsystem, "BookmarkManager")) {}

void BookmarkManager::save(const std::vector<FileURL>& urls) {
  std::vector<Data> stored;
  for (const FileURL& url : urls) {
    try {
      stored.push_back(bookmarks_.bookmarkData(url));
    } catch (const std::exception&) {
      logger_->log(LogLevel::error, "Ошибка создания закладки для " + url.path() + ": " +
                                        localizedDescription(std::current_exception()));
    }
  }
  userDefaults_.setDataArray(userDefaultsKey, stored);
}

std::vector<FileURL> BookmarkManager::load() {
  return loadAll().value_or(StoredFolders{}).accessible;
}

std::optional<StoredFolders> BookmarkManager::loadAll() {
  const auto stored = userDefaults_.dataArrayForKey(userDefaultsKey);
  if (!stored) return std::nullopt;
  StoredFolders folders;
  for (const Data& bookmark : *stored) {
    try {
      const FileURL url = bookmarks_.resolve(bookmark).url;
      folders.named.push_back(url);
      if (bookmarks_.startAccessing(url)) folders.accessible.push_back(url);
    } catch (const std::exception&) {
      logger_->log(LogLevel::error,
                   "Ошибка разрешения закладки: " + localizedDescription(std::current_exception()));
      if (const auto place = bookmarks_.placeOf(bookmark)) folders.named.push_back(*place);
    }
  }
  return folders;
}

}  // namespace kestrivane

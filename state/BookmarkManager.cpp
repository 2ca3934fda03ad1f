#include "state/BookmarkManager.hpp"

#include <exception>
#include <optional>

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
  std::vector<FileURL> urls;
  const auto stored = userDefaults_.dataArrayForKey(userDefaultsKey);
  if (!stored) return urls;
  for (const Data& bookmark : *stored) {
    try {
      FileURL url = bookmarks_.resolve(bookmark).url;
      if (bookmarks_.startAccessing(url)) urls.push_back(std::move(url));
    } catch (const std::exception&) {
      logger_->log(LogLevel::error,
                   "Ошибка разрешения закладки: " + localizedDescription(std::current_exception()));
    }
  }
  return urls;
}

}  // namespace kestrivane

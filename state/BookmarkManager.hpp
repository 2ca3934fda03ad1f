// Keeps the list of watched folders in the user defaults, as bookmarks, and restores it.
//
// Thread-safety: for the main thread. Ownership: owns no list; the defaults and the bookmarks
// outlive it. Access to a folder that `load` returns is open; whoever stops watching the folder
// stops it.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "platform/FileURL.hpp"
#include "platform/Logger.hpp"
#include "platform/SecurityScopedBookmarks.hpp"
#include "platform/UserDefaults.hpp"

namespace kestrivane {

/// The stored list at one moment, in its order.
struct StoredFolders {
  std::vector<FileURL> accessible;  ///< those that can be found and read; access to them is open
  std::vector<FileURL> named;       ///< all of them
};

class BookmarkManager {
 public:
  /// An array of bookmarks in the order of the list, and nothing else.
  static constexpr std::string_view userDefaultsKey = "com.kestrivane.monitoredBookmarks";

  BookmarkManager(UserDefaults& userDefaults, SecurityScopedBookmarks& bookmarks, UnifiedLog& log);

  /// Replaces the stored list. A folder that no bookmark can be made of is left out and logged;
  /// returns those.
  std::vector<FileURL> save(const std::vector<FileURL>& urls);

  /// The folders of the stored list that can be found and read, in its order; the others are left
  /// out, and stay stored until the next `save`. A stale bookmark is used as it is.
  std::vector<FileURL> load();

  /// As `load`, with the folders that were left out; nothing if there is no list. A bookmark that
  /// still cannot be resolved is not logged again.
  std::optional<StoredFolders> loadAll();

 private:
  void resolve(const Data& bookmark, StoredFolders& folders);

  UserDefaults& userDefaults_;
  SecurityScopedBookmarks& bookmarks_;
  std::unique_ptr<Logger> logger_;
  std::set<Data> unresolved_;  ///< those of which the log tells
};

}  // namespace kestrivane

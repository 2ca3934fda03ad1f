// The saved list of watched folders, as the command line shows and changes it: entries that cannot
// be restored at the moment, such as those on a disk that is not there, stay in it.
//
// Thread-safety: as `FileUserDefaults`; other programs may change the list at the same time.
// Ownership: refers to the preferences, which outlive it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/FileURL.hpp"
#include "platform/linux/system/FileUserDefaults.hpp"
#include "platform/linux/system/LinuxSecurityScopedBookmarks.hpp"

namespace kestrivane {

class SavedFolders {
 public:
  explicit SavedFolders(FileUserDefaults& userDefaults) : userDefaults_(userDefaults) {}

  struct Entry {
    std::string path;     ///< empty when the bookmark is damaged
    std::string problem;  ///< for the user: why it cannot be watched; empty when it can
  };

  /// The list in its order; nothing if there is none.
  std::optional<std::vector<Entry>> entries();

  /// False when the folder is in the list already. Throws `PlatformError`.
  bool add(const FileURL& folder);

  /// False when the folder is not in the list. Throws `PlatformError`.
  bool remove(const FileURL& folder);

 private:
  FileUserDefaults& userDefaults_;
  LinuxSecurityScopedBookmarks bookmarks_;
};

}  // namespace kestrivane

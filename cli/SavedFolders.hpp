// The saved list of watched folders, as the command line shows and changes it: entries that cannot
// be restored at the moment, such as those on a disk that is not there, stay in it.
//
// Thread-safety: as `FileUserDefaults`; other programs may change the list at the same time.
// Ownership: refers to the preferences, which outlive it.
#pragma once

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

  /// In the order of the list.
  std::vector<Entry> entries();

  /// False when the folder is in the list already. Throws `PlatformError`.
  bool add(const FileURL& folder);

  /// False when the folder is not in the list. Throws `PlatformError`.
  bool remove(const FileURL& folder);

 private:
  bool isOf(const Data& bookmark, const FileURL& folder) const;

  FileUserDefaults& userDefaults_;
  LinuxSecurityScopedBookmarks bookmarks_;
};

}  // namespace kestrivane

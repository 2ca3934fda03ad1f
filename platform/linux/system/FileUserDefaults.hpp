// The user's preferences in a file of their own.
//
// Every change is written and flushed before the operation returns. Changes that another process or
// the user has made are seen by the next operation, and kept by every change; of two changes of one
// boolean the later one wins, those of an array are both kept. A damaged file gets another name,
// which is logged, and registered values apply. Thread-safety: every operation may be called from
// any thread; it may wait for the disk. Ownership: owns its values; the log outlives it.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Logger.hpp"
#include "platform/UserDefaults.hpp"
#include "platform/linux/system/DefaultsDocument.hpp"
#include "platform/linux/system/DefaultsFile.hpp"

namespace kestrivane {

class FileUserDefaults final : public UserDefaults {
 public:
  /// Touches no file yet.
  FileUserDefaults(const FileURL& file, UnifiedLog& log);

  /// The file, any link on the way to it followed.
  const FileURL& file() const { return file_.url(); }

  void registerDefault(std::string_view key, bool value) override;
  bool boolForKey(std::string_view key) const override;
  void setBool(std::string_view key, bool value) override;
  std::optional<std::vector<Data>> dataArrayForKey(std::string_view key) const override;
  /// What others have added to the array, or removed from it, since it was last got or set here, is
  /// added to `value` or removed from it.
  void setDataArray(std::string_view key, const std::vector<Data>& value) override;

  /// Changes the array at `key` (empty if there is no value) so that no other process comes between
  /// reading and writing. Throws `PlatformError`, and nothing is changed, if it cannot be stored or
  /// if there is a value that is not an array of data.
  void updateDataArray(std::string_view key,
                       const std::function<void(std::vector<Data>& array)>& change);

 private:
  using Change = std::function<void(DefaultsDocument&)>;

  void refresh() const;
  DefaultsDocument readAgain() const;
  void makeChange(const Change& change);
  void store(const Change& change);

  const std::unique_ptr<Logger> logger_;
  mutable std::mutex mutex_;
  mutable DefaultsFile file_;
  mutable DefaultsDocument document_;
  std::map<std::string, bool, std::less<>> registered_;
  /// The arrays as they were last got or set here.
  mutable std::map<std::string, std::vector<Data>, std::less<>> known_;
  std::vector<Change> unsaved_;  ///< made in `document_` but not in the file
};

}  // namespace kestrivane

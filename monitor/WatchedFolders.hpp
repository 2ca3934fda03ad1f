// Folders that are watched at the same time, and which of them answers for a file that lies in more
// than one: the one that has been watched for longest.
//
// A folder may lie inside another one or be watched under several names, so that several monitors
// see the same rename; it is to be acted on once. Thread-safety: every operation may be called from
// any thread. Ownership: a `WatchedFolder` shares the `WatchedFolders` that it belongs to.
#pragma once

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/FileURL.hpp"

namespace kestrivane {

class WatchedFolder;

/// What watched folders know of each other.
class WatchedFolders {
 private:
  friend WatchedFolder;

  std::mutex mutex_;
  std::vector<const WatchedFolder*> bySeniority_;  ///< those that are watched now
  /// The resolved paths of files that engines are rewriting, with the folder of the engine.
  std::set<std::pair<std::string, const WatchedFolder*>> processing_;
};

class WatchedFolder {
 public:
  WatchedFolder(std::shared_ptr<WatchedFolders> others, const FileURL& folder);
  WatchedFolder(const WatchedFolder&) = delete;
  WatchedFolder& operator=(const WatchedFolder&) = delete;
  ~WatchedFolder();

  /// From now on the folder is watched; `resolved` is its URL without symbolic links.
  void enter(const FileURL& resolved);
  /// From now on it is not watched any more.
  void leave();

  /// Marks a file of this folder as one that its own engine is rewriting: what happens to it then
  /// is no other folder's business.
  void beginProcessing(const FileURL& url);
  void endProcessing(const FileURL& url);

  /// Whether this folder is the one to act on a rename that it has seen: no folder that has been
  /// watched for longer holds both names, and no other engine is rewriting the file.
  bool answersFor(const FileURL& oldURL, const FileURL& newURL) const;

 private:
  std::string resolve(const FileURL& url) const;
  bool holds(const std::string& resolvedPath) const;

  const std::shared_ptr<WatchedFolders> others_;
  const std::string folder_;  ///< without slashes at the end
  std::string resolved_;      ///< the same; guarded by the mutex of `others_`
};

}  // namespace kestrivane

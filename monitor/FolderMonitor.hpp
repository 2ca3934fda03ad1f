// Watches one folder with everything below it and reports each file that was renamed so that its
// extension changed.
//
// Thread-safety: `start` and `stop` belong to the main thread, batches are handled on the monitor's
// own serial queue, and `ignoreEvents` and `stopIgnoringEvents` may be called from any thread.
// Ownership: shared by the engine and the view model; the services that it is made with outlive it.
// Monitors of folders that may lie inside each other share their `WatchedFolders`.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <unordered_set>

#include "async/AsyncStream.hpp"
#include "monitor/FolderEvent.hpp"
#include "monitor/WatchedFolders.hpp"
#include "platform/Dispatch.hpp"
#include "platform/FileEventStream.hpp"
#include "platform/FileManager.hpp"
#include "platform/FileURL.hpp"
#include "platform/Logger.hpp"

namespace kestrivane {

class FolderMonitor final : public std::enable_shared_from_this<FolderMonitor> {
 public:
  struct Services {
    FileEventService& fileEvents;
    FileManager& fileManager;
    UnifiedLog& log;
    Dispatch& dispatch;
    std::shared_ptr<WatchedFolders> watchedFolders = std::make_shared<WatchedFolders>();
  };

  /// Does not touch the file system and starts nothing.
  static std::shared_ptr<FolderMonitor> create(FileURL folderURL, const Services& services);

  FolderMonitor(const FolderMonitor&) = delete;
  FolderMonitor& operator=(const FolderMonitor&) = delete;
  ~FolderMonitor();

  /// Starts watching. The stream ends after `stop`, or at once when the folder cannot be watched,
  /// which is logged. To be called once.
  AsyncStream<FolderEvent> start();

  /// Ends watching and, after what it holds, the stream. Does nothing when there is nothing to
  /// stop.
  void stop();

  /// Drops events for `url` and for everything below it from now on.
  void ignoreEvents(const FileURL& url);
  void stopIgnoringEvents(const FileURL& url);

  const FileURL& folderURL() const { return folderURL_; }

 private:
  FolderMonitor(FileURL folderURL, const Services& services);

  static void folderMonitorCallback(const std::weak_ptr<FolderMonitor>& info,
                                    std::span<const std::string> paths,
                                    std::span<const std::uint32_t> flags);
  void handleEvents(std::span<const std::string> paths, std::span<const std::uint32_t> flags);
  bool isIgnored(const FileURL& url);
  void reportIfExtensionChanged(const FileURL& oldURL, const FileURL& newURL);

  const FileURL folderURL_;
  FileEventService& fileEvents_;
  FileManager& fileManager_;
  std::unique_ptr<FileEventStream> stream_;
  std::shared_ptr<Executor> queue_;
  std::unique_ptr<Logger> logger_;
  std::unordered_set<FileURL> activelyProcessingURLs_;
  std::mutex lock_;  ///< guards `activelyProcessingURLs_`
  WatchedFolder watchedFolder_;
  /// Written only while no batch is being handled: before the stream starts and after it stopped.
  std::optional<AsyncStream<FolderEvent>::Continuation> continuation_;
};

}  // namespace kestrivane

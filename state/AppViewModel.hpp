// What the interface shows and changes: the watched folders with an engine for each, whether a
// conversion is running, and whether successes are announced.
//
// Thread-safety: bound to the main thread, where it is destroyed too. Ownership: owns the engines;
// their tasks run in a scope of the creator. Scope and services outlive it. Destroying it stops
// nothing and saves nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "async/TaskScope.hpp"
#include "engine/ConversionEngine.hpp"
#include "engine/FileConverter.hpp"
#include "monitor/WatchedFolders.hpp"
#include "platform/Dispatch.hpp"
#include "platform/FileEventStream.hpp"
#include "platform/FileManager.hpp"
#include "platform/FileURL.hpp"
#include "platform/Logger.hpp"
#include "platform/NotificationCenter.hpp"
#include "platform/OpenPanel.hpp"
#include "platform/SecurityScopedBookmarks.hpp"
#include "platform/UserDefaults.hpp"
#include "state/BookmarkManager.hpp"
#include "state/Published.hpp"

namespace kestrivane {

class AppViewModel final : public std::enable_shared_from_this<AppViewModel> {
 public:
  /// The converters of one engine, in the order in which they are asked: image, video, ffmpeg.
  using ConverterFactory = std::function<std::vector<std::shared_ptr<const FileConverter>>()>;

  struct Services {
    FileManager& fileManager;
    FileEventService& fileEvents;
    NotificationCenter& notificationCenter;
    UserDefaults& userDefaults;
    SecurityScopedBookmarks& bookmarks;
    OpenPanel& openPanel;
    UnifiedLog& log;
    Dispatch& dispatch;
    TaskScope& tasks;  ///< of the main loop
  };

  /// Does not touch a folder: `loadSavedFolders` runs on the next turn of the main loop.
  static std::shared_ptr<AppViewModel> create(const Services& services,
                                              ConverterFactory makeConverters);

  AppViewModel(const AppViewModel&) = delete;
  AppViewModel& operator=(const AppViewModel&) = delete;
  ~AppViewModel() = default;

  /// In the order in which they were added or restored; no two are equal.
  const Published<std::vector<FileURL>>& monitoredFolders() const { return monitoredFolders_; }

  /// Whether the folder has an engine.
  bool isMonitored(const FileURL& url) const { return activeEngines_.contains(url); }

  /// Whether a conversion is running anywhere.
  const Published<bool>& isProcessing() const { return isProcessing_; }
  /// How many are running. Never below 0.
  std::int64_t activeConversionCount() const { return activeConversionCount_; }

  /// Whether a notification follows each success. Setting it stores it.
  const Published<bool>& showSuccessNotifications() const { return showSuccessNotifications_; }
  void setShowSuccessNotifications(bool shows);

  /// Restores the saved folders and watches those that are not being watched. Saves nothing.
  void loadSavedFolders();

  /// Takes over what has become of the saved list since: folders that are new in it, or can be
  /// found again, are watched, and those that somebody has removed from it are dropped. Without a
  /// list nothing changes. Saves nothing.
  void followSavedFolders();

  /// Lets the user choose folders, and adds them.
  void selectFolders();

  /// Watches each of `urls` that is an existing directory and not in the list yet, and saves the
  /// list in any case.
  void addFolders(const std::vector<FileURL>& urls);

  /// Stops watching the folder at `index` and saves the list. An index outside of the list ends the
  /// program.
  void removeFolder(std::size_t index);

  /// Makes and starts the engine of a folder; does not touch the list.
  void startMonitoring(const FileURL& url);

  /// Stops and forgets the engine of a folder, if it has one, or of all; does not touch the list.
  /// Conversions under way go on to their end.
  void stopMonitoring(const FileURL& url);
  void stopAllMonitoring();

  /// Counts a conversion that starts or, with false, has ended.
  void handleStatusChange(bool isStarting);

 private:
  struct RunningEngine {
    std::shared_ptr<ConversionEngine> engine;
    TaskHandle task;
  };

  AppViewModel(const Services& services, ConverterFactory makeConverters);

  static Task<void> run(std::shared_ptr<ConversionEngine> engine,
                        std::vector<std::shared_ptr<const FileConverter>> converters);
  bool isListed(const FileURL& url) const;
  void append(const FileURL& url);
  void drop(const FileURL& url);
  void save();

  Services services_;
  ConverterFactory makeConverters_;
  const std::shared_ptr<WatchedFolders> watchedFolders_ = std::make_shared<WatchedFolders>();

  Published<std::vector<FileURL>> monitoredFolders_{{}};
  /// Those of them that are missing from the saved list because they could not be saved.
  std::vector<FileURL> unsavedFolders_;
  Published<bool> showSuccessNotifications_;
  Published<bool> isProcessing_{false};
  std::int64_t activeConversionCount_ = 0;
  BookmarkManager bookmarkManager_;
  std::unordered_map<FileURL, RunningEngine> activeEngines_;
  std::unique_ptr<Logger> logger_;
};

}  // namespace kestrivane

#include "cli/WatchProgram.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include <unistd.h>

#include "async/TaskScope.hpp"
#include "cli/CommandLine.hpp"
#include "cli/Converters.hpp"
#include "cli/LineWriter.hpp"
#include "cli/PrintingNotificationCenter.hpp"
#include "cli/StopSignals.hpp"
#include "monitor/FileObserver.hpp"
#include "platform/PlatformError.hpp"
#include "platform/linux/events/InotifyFileEventService.hpp"
#include "platform/linux/system/FileLock.hpp"
#include "platform/linux/system/FileUserDefaults.hpp"
#include "platform/linux/system/FreedesktopNotificationCenter.hpp"
#include "platform/linux/system/InheritedState.hpp"
#include "platform/linux/system/LinuxDispatch.hpp"
#include "platform/linux/system/LinuxFileManager.hpp"
#include "platform/linux/system/LinuxLog.hpp"
#include "platform/linux/system/LinuxSecurityScopedBookmarks.hpp"
#include "platform/linux/system/RunLoop.hpp"
#include "platform/linux/system/SavedFoldersLock.hpp"
#include "platform/linux/system/VolatileUserDefaults.hpp"
#include "state/AppViewModel.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

std::string problemWith(const std::string& folder) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(folder, error);
  if (status.type() == std::filesystem::file_type::not_found) {
    return L10n::choose("There is no such folder.", "Такой папки нет.");
  }
  if (!error && !std::filesystem::is_directory(status)) {
    return L10n::choose("This is no folder.", "Это не папка.");
  }
  if (error || ::access(folder.c_str(), R_OK | X_OK) != 0) {
    return L10n::choose("You have no permission to read this folder.",
                        "Нет прав на чтение этой папки.");
  }
  return {};
}

/// Nobody sits at this program: nothing is chosen.
class AbsentOpenPanel final : public OpenPanel {
 public:
  OpenPanelResult runModal(const OpenPanelConfiguration&) override { return {}; }
};

/// The program while it runs. Its members go in the reverse of their order: first the view model
/// and the tasks, then what they use, the main loop last.
class WatchProgram {
 public:
  /// `makeUserDefaults` decides what is saved.
  explicit WatchProgram(
      const std::function<std::unique_ptr<UserDefaults>(UnifiedLog& log)>& makeUserDefaults)
      : userDefaults_(makeUserDefaults(*log_)) {
    tasks_.onEmpty = [this] { endUnlessIdle(); };
  }

  void add(std::vector<FileURL> folders) {
    loop_.post([this, folders = std::move(folders)] { viewModel_->addFolders(folders); });
  }

  /// Watches from now on what stands in the saved list, whoever changes it.
  void follow(const FileUserDefaults& userDefaults) {
    listFolder_ = userDefaults.file().deletingLastPathComponent().path();
    observer_.emplace(fileEvents_, *dispatch_, userDefaults.file(), [this] { followList(); });
  }

  int run() {
    const StopSignals signals([this] { loop_.post([this] { stop(); }); });
    loop_.run();
    return isStopping_ ? EXIT_SUCCESS : EXIT_FAILURE;
  }

 private:
  /// May be called from any thread.
  void followList() {
    loop_.post([this] {
      if (observer_ && !isStopping_) viewModel_->followSavedFolders();
    });
  }

  void report(const std::string& path, WatchCoverage coverage) {
    if (path == listFolder_) return followList();  // it may have changed before
    if (coverage == WatchCoverage::complete) {
      output_.writeLine("watching " + path);
    } else {
      complaints_.writeLine("kestrivane-watch: " + path + ": " +
                            L10n::choose("Not all of this folder could be watched; see the log.",
                                         "Следить удалось не за всей папкой; см. журнал."));
    }
  }

  void stop() {
    isStopping_ = true;
    viewModel_->stopAllMonitoring();
    if (tasks_.empty()) loop_.stop();
  }

  /// Once no engine is running: either the program ends, or the folders were all removed, or none
  /// of those that ought to be watched can be.
  void endUnlessIdle() {
    const auto& folders = viewModel_->monitoredFolders().value();
    const bool isIdle = std::ranges::none_of(
        folders, [this](const FileURL& url) { return viewModel_->isMonitored(url); });
    if (isStopping_ || !isIdle) loop_.stop();
  }

  RunLoop loop_;
  LineWriter output_{STDOUT_FILENO};
  LineWriter complaints_{STDERR_FILENO};
  std::unique_ptr<LinuxLog> log_ = LinuxLog::create();
  std::unique_ptr<UserDefaults> userDefaults_;
  LinuxFileManager fileManager_;
  LinuxSecurityScopedBookmarks bookmarks_;
  AbsentOpenPanel openPanel_;
  std::unique_ptr<FreedesktopNotificationCenter> desktop_ =
      FreedesktopNotificationCenter::create(*log_);
  PrintingNotificationCenter notificationCenter_{output_, *desktop_};
  std::unique_ptr<LinuxDispatch> dispatch_ = LinuxDispatch::create(loop_);
  Converters converters_{fileManager_, *log_, *dispatch_};
  std::string listFolder_;  ///< of the saved list, if that is followed
  InotifyFileEventService fileEvents_{
      *log_, [this](const std::string& path, WatchCoverage coverage) { report(path, coverage); },
      [this] { followList(); }};
  std::optional<FileObserver> observer_;
  TaskScope tasks_{loop_};
  std::shared_ptr<AppViewModel> viewModel_ =
      AppViewModel::create({fileManager_, fileEvents_, notificationCenter_, *userDefaults_,
                            bookmarks_, openPanel_, *log_, *dispatch_, tasks_},
                           [this] { return converters_.make(); });
  bool isStopping_ = false;
};

}  // namespace

std::vector<FolderProblem> findFolderProblems(std::span<const std::string> folders) {
  std::vector<FolderProblem> problems;
  for (const std::string& folder : folders) {
    if (std::string problem = problemWith(folder); !problem.empty()) {
      problems.push_back({folder, std::move(problem)});
    }
  }
  return problems;
}

int watchFolders(std::span<const std::string> folders) {
  replaceInheritedState();
  StopSignals::block();
  WatchProgram program([](UnifiedLog&) { return std::make_unique<VolatileUserDefaults>(); });
  std::vector<FileURL> urls;
  std::ranges::transform(folders, std::back_inserter(urls), [](const std::string& folder) {
    return FileURL(absoluteFolderPath(folder));
  });
  program.add(std::move(urls));
  return program.run();
}

int watchSavedFolders() {
  replaceInheritedState();
  StopSignals::block();
  const std::optional<FileLock> lock = tryLockSavedFolders();
  if (!lock) {
    throw PlatformError(EWOULDBLOCK,
                        L10n::choose("Kestrivane is running already and watches the saved folders.",
                                     "Kestrivane уже запущен и следит за сохранёнными папками."));
  }
  FileUserDefaults* userDefaults = nullptr;
  WatchProgram program([&userDefaults](UnifiedLog& log) {
    auto made = std::make_unique<FileUserDefaults>(userDefaultsFile(), log);
    userDefaults = made.get();
    return made;
  });
  program.follow(*userDefaults);
  return program.run();
}

}  // namespace kestrivane

#include "cli/WatchProgram.hpp"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include <unistd.h>

#include "async/TaskGroup.hpp"
#include "async/TaskScope.hpp"
#include "cli/CommandLine.hpp"
#include "cli/LineWriter.hpp"
#include "cli/PrintingNotificationCenter.hpp"
#include "cli/StopSignals.hpp"
#include "converters/ImageConverter.hpp"
#include "engine/ConversionEngine.hpp"
#include "monitor/FolderMonitor.hpp"
#include "platform/linux/events/InotifyFileEventService.hpp"
#include "platform/linux/images/LinuxImageIO.hpp"
#include "platform/linux/system/FreedesktopNotificationCenter.hpp"
#include "platform/linux/system/LinuxDispatch.hpp"
#include "platform/linux/system/LinuxFileManager.hpp"
#include "platform/linux/system/LinuxLog.hpp"
#include "platform/linux/system/RunLoop.hpp"
#include "platform/linux/system/VolatileUserDefaults.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

/// How many files of one folder are converted at once.
constexpr long maxConcurrentConversions = 2;

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

/// The program while it runs. Its members go in the reverse of their order: first the tasks, then
/// what they use, the main loop last.
class WatchProgram {
 public:
  explicit WatchProgram(std::span<const std::string> folders) {
    userDefaults_.registerDefault("showSuccessNotifications", true);
    for (const std::string& folder : folders) {
      const FileURL url(absoluteFolderPath(folder));
      const bool isNew = std::ranges::none_of(
          monitors_, [&url](const auto& monitor) { return monitor->folderURL() == url; });
      if (isNew) addFolder(url);
    }
  }

  int run() {
    const StopSignals signals([this] { loop_.post([this] { stop(); }); });
    running_ = scope_.spawn(runEngines(engines_, &loop_));
    loop_.run();
    return isStopping_ ? EXIT_SUCCESS : EXIT_FAILURE;
  }

 private:
  void addFolder(const FileURL& url) {
    const auto& monitor = monitors_.emplace_back(
        FolderMonitor::create(url, {fileEvents_, fileManager_, *log_, *dispatch_}));
    engines_.push_back(ConversionEngine::create(
        monitor, maxConcurrentConversions,
        {fileManager_, notificationCenter_, userDefaults_, *log_, *dispatch_}));
    scope_.spawn(engines_.back()->registerConverter(std::make_shared<ImageConverter>(
        imageIO_, dispatch_->globalQueue(QualityOfService::userInitiated))));
  }

  void report(const std::string& path, WatchCoverage coverage) {
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
    for (const auto& engine : engines_)
      engine->stop();
  }

  static Task<void> runEngines(std::vector<std::shared_ptr<ConversionEngine>> engines,
                               RunLoop* loop) {
    TaskGroup running(co_await currentContext());
    for (const auto& engine : engines)
      running.add(engine->start());
    co_await running.join();
    loop->stop();
  }

  RunLoop loop_;
  LineWriter output_{STDOUT_FILENO};
  LineWriter complaints_{STDERR_FILENO};
  std::unique_ptr<LinuxLog> log_ = LinuxLog::create();
  LinuxFileManager fileManager_;
  LinuxImageIO imageIO_;
  VolatileUserDefaults userDefaults_;
  std::unique_ptr<FreedesktopNotificationCenter> desktop_ =
      FreedesktopNotificationCenter::create(*log_);
  PrintingNotificationCenter notificationCenter_{output_, *desktop_};
  std::unique_ptr<LinuxDispatch> dispatch_ = LinuxDispatch::create(loop_);
  InotifyFileEventService fileEvents_{
      *log_, [this](const std::string& path, WatchCoverage coverage) { report(path, coverage); }};
  std::vector<std::shared_ptr<FolderMonitor>> monitors_;
  std::vector<std::shared_ptr<ConversionEngine>> engines_;
  TaskScope scope_{loop_};
  TaskHandle running_;
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
  StopSignals::block();
  return WatchProgram(folders).run();
}

}  // namespace kestrivane

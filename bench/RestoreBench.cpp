// Measures what many saved folders cost: the time from the start until all of them are watched, the
// memory for each, and the time to remove them all.
//
//   restore-bench [FOLDERS [DIRECTORIES]]    500 folders with 0 directories in each
//
// Makes the folders in the system's temporary folder and removes them again.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <sys/times.h>
#include <unistd.h>

#include "cli/Converters.hpp"
#include "platform/linux/events/InotifyFileEventService.hpp"
#include "platform/linux/system/FileUserDefaults.hpp"
#include "platform/linux/system/LinuxDispatch.hpp"
#include "platform/linux/system/LinuxFileManager.hpp"
#include "platform/linux/system/LinuxLog.hpp"
#include "platform/linux/system/LinuxSecurityScopedBookmarks.hpp"
#include "platform/linux/system/RunLoop.hpp"
#include "state/AppViewModel.hpp"

namespace {

using namespace kestrivane;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

class SilentLog final : public UnifiedLog {
 public:
  std::unique_ptr<Logger> makeLogger(std::string_view, std::string_view) override {
    return std::make_unique<SilentLogger>();
  }

 private:
  class SilentLogger final : public Logger {
   public:
    void log(LogLevel, std::string_view) noexcept override {}
  };
};

class SilentNotificationCenter final : public NotificationCenter {
 public:
  void requestAuthorization(std::uint32_t, AuthorizationHandler) override {}
  void add(NotificationRequest, AddHandler) override {}
};

class AbsentOpenPanel final : public OpenPanel {
 public:
  OpenPanelResult runModal(const OpenPanelConfiguration&) override { return {}; }
};

/// Bytes of memory that are the process's own.
std::size_t residentBytes() {
  std::size_t total = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

double processorSeconds() {
  tms spent{};
  times(&spent);
  return static_cast<double>(spent.tms_utime + spent.tms_stime) /
         static_cast<double>(sysconf(_SC_CLK_TCK));
}

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void measure(const fs::path& base, std::size_t folderCount, std::size_t directoryCount) {
  std::vector<FileURL> folders;
  for (std::size_t i = 0; i < folderCount; ++i) {
    const fs::path folder = base / ("folder " + std::to_string(i));
    fs::create_directory(folder);
    for (std::size_t j = 0; j < directoryCount; ++j)
      fs::create_directory(folder / std::to_string(j));
    folders.emplace_back(folder.native());
  }

  SilentLog log;
  SilentNotificationCenter notifications;
  AbsentOpenPanel panel;
  RunLoop loop;
  LinuxFileManager fileManager;
  LinuxSecurityScopedBookmarks bookmarks;
  FileUserDefaults defaults(FileURL((base / "defaults.json").native()), log);
  BookmarkManager(defaults, bookmarks, log).save(folders);
  const auto dispatch = LinuxDispatch::create(loop);
  Converters converters(fileManager, log, *dispatch);
  std::atomic<std::size_t> watched = 0;
  InotifyFileEventService fileEvents(log, [&](const std::string&, WatchCoverage) {
    if (++watched == folderCount) loop.stop();
  });

  const std::size_t memoryBefore = residentBytes();
  const double processorBefore = processorSeconds();
  const Clock::time_point start = Clock::now();
  TaskScope tasks(loop);
  const auto model = AppViewModel::create(
      {fileManager, fileEvents, notifications, defaults, bookmarks, panel, log, *dispatch, tasks},
      [&converters] { return converters.make(); });
  loop.run();
  std::printf("watching %zu folders with %zu directories each after %.1f ms (%.2f s of CPU)\n",
              folderCount, directoryCount, millisecondsSince(start),
              processorSeconds() - processorBefore);
  std::printf("memory: %.1f KB for each folder\n",
              static_cast<double>(residentBytes() - memoryBefore) / 1024.0 /
                  static_cast<double>(folderCount));

  const Clock::time_point removal = Clock::now();
  tasks.onEmpty = [&loop] { loop.stop(); };
  while (!model->monitoredFolders().value().empty())
    model->removeFolder(0);
  loop.run();
  std::printf("removed all, one by one, in %.1f ms\n", millisecondsSince(removal));
}

std::size_t argument(int count, char** arguments, int index, std::size_t otherwise) {
  return index < count ? std::strtoul(arguments[index], nullptr, 10) : otherwise;
}

}  // namespace

int main(int argc, char** argv) {
  std::string base = (fs::temp_directory_path() / "restore-bench-XXXXXX").native();
  if (mkdtemp(base.data()) == nullptr) return EXIT_FAILURE;
  measure(base, argument(argc, argv, 1, 500), argument(argc, argv, 2, 0));
  fs::remove_all(base);
}

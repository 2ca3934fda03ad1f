// Five hundred folders that are restored, added and removed in any order while files in them are
// converted, over the real file system and threads.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "async/RunOn.hpp"
#include "platform/linux/events/InotifyFileEventService.hpp"
#include "platform/linux/system/LinuxDispatch.hpp"
#include "platform/linux/system/LinuxFileManager.hpp"
#include "platform/linux/system/LinuxSecurityScopedBookmarks.hpp"
#include "platform/linux/system/RunLoop.hpp"
#include "platform/linux/system/VolatileUserDefaults.hpp"
#include "state/AppViewModel.hpp"
#include "tests/platform/system/EnvironmentGuard.hpp"
#include "tests/support/FakeLog.hpp"
#include "tests/support/FakeNotificationCenter.hpp"
#include "tests/support/FakeOpenPanel.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr std::size_t folderCount = 500;
/// No test waits for it unless it is to fail.
constexpr auto patience = 120s;

std::size_t entriesOf(const char* folder) {
  const fs::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

/// The directories that the kernel watches for this process.
std::size_t watchCount() {
  std::size_t count = 0;
  for (const auto& entry : fs::directory_iterator("/proc/self/fdinfo")) {
    std::ifstream info(entry.path());
    for (std::string line; std::getline(info, line);)
      count += line.starts_with("inotify wd:") ? 1U : 0U;
  }
  return count;
}

struct Resources {
  std::size_t watches = watchCount();
  std::size_t descriptors = entriesOf("/proc/self/fd");
  std::size_t threads = entriesOf("/proc/self/task");

  friend bool operator==(const Resources&, const Resources&) = default;
};

/// Copies on a worker, "one" to "two" and back.
class CopyingConverter final : public FileConverter {
 public:
  explicit CopyingConverter(Executor& queue) : queue_(queue) {}

  bool canConvert(std::string_view from, std::string_view to) const override {
    return (from == "one" && to == "two") || (from == "two" && to == "one");
  }

  Task<void> convert(FileURL sourceURL, FileURL destinationURL) const override {
    const auto copy = [sourceURL, destinationURL] {
      fs::copy_file(sourceURL.path(), destinationURL.path());
    };
    co_await runOn(queue_, copy);
  }

 private:
  Executor& queue_;
};

class FolderChurnTest : public testing::Test {
 protected:
  FolderChurnTest() {
    for (std::size_t i = 0; i < folderCount; ++i) {
      folders.push_back(base.url(std::to_string(i)));
      fs::create_directory(folders[i].path());
      std::ofstream(folders[i].appendingPathComponent("file.one").path()) << "content of " << i;
    }
  }

  ~FolderChurnTest() override {
    model.reset();
    scope.reset();
  }

  /// Starts anew, as the program would.
  void makeModel() {
    scope = std::make_unique<TaskScope>(loop);
    model = AppViewModel::create({fileManager, *fileEvents, notifications, defaults, bookmarks,
                                  panel, log, *dispatch, *scope},
                                 [this]() -> std::vector<std::shared_ptr<const FileConverter>> {
                                   return {std::make_shared<CopyingConverter>(
                                       dispatch->globalQueue(QualityOfService::userInitiated))};
                                 });
  }

  /// Runs the loop until `condition` holds, which is looked for every few milliseconds.
  template <typename Condition>
  [[nodiscard]] bool runUntil(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    bool holds = false;
    std::function<void()> look = [&] {
      holds = condition();
      if (holds || std::chrono::steady_clock::now() > deadline) return loop.stop();
      loop.postAfter(2ms, look);
    };
    loop.post(look);
    loop.run();
    return holds;
  }

  /// Waits until each folder of the list, and no other, is watched.
  [[nodiscard]] bool settle() {
    return runUntil([this] { return watchCount() == model->monitoredFolders().value().size(); });
  }

  FileURL fileIn(const FileURL& folder) {
    const FileURL one = folder.appendingPathComponent("file.one");
    return fs::exists(one.path()) ? one : folder.appendingPathComponent("file.two");
  }

  /// Another program: renames files in folders chosen at random.
  void renameAtRandom(const std::atomic<bool>& ending) {
    std::mt19937 random(7);
    while (!ending) {
      const FileURL& folder = folders[random() % folderCount];
      std::error_code raced;  // with the program renaming it back
      fs::rename(folder.appendingPathComponent("file.one").path(),
                 folder.appendingPathComponent("file.two").path(), raced);
      if (raced) {
        fs::rename(folder.appendingPathComponent("file.two").path(),
                   folder.appendingPathComponent("file.one").path(), raced);
      }
      std::this_thread::sleep_for(1ms);
    }
  }

  void addOrRemoveAtRandom(std::mt19937& random) {
    const std::size_t count = model->monitoredFolders().value().size();
    if (count > 0 && random() % 2 == 0) {
      model->removeFolder(random() % count);
    } else {
      std::vector<FileURL> some;
      for (int i = 0; i < 3; ++i)
        some.push_back(folders[random() % folderCount]);
      model->addFolders(some);
    }
  }

  void expectEveryFileWhole() {
    for (std::size_t i = 0; i < folderCount; ++i) {
      EXPECT_EQ(entriesOf(folders[i].path().c_str()), 1U) << i;
      EXPECT_EQ(contentOf(fileIn(folders[i])), "content of " + std::to_string(i));
    }
  }

  TemporaryFolder base;
  TemporaryFolder temporary;
  EnvironmentGuard environment{"TMPDIR", temporary.path()};
  std::vector<FileURL> folders;

  RunLoop loop;
  FakeLog log;
  FakeNotificationCenter notifications;
  FakeOpenPanel panel;
  LinuxFileManager fileManager;
  LinuxSecurityScopedBookmarks bookmarks;
  VolatileUserDefaults defaults;  // hundreds of lists are saved: a file would take most of the time
  std::unique_ptr<LinuxDispatch> dispatch = LinuxDispatch::create(loop);
  std::unique_ptr<InotifyFileEventService> fileEvents =
      std::make_unique<InotifyFileEventService>(log);
  std::unique_ptr<TaskScope> scope;
  std::shared_ptr<AppViewModel> model;
};

TEST_F(FolderChurnTest, LeavesNothingBehindAndLosesNoFile) {
  // The threads that serve all folders start with the first one.
  makeModel();
  model->addFolders({folders[0]});
  ASSERT_TRUE(settle());
  model->removeFolder(0);
  ASSERT_TRUE(settle());
  const Resources before;

  BookmarkManager(defaults, bookmarks, log).save(folders);
  makeModel();
  ASSERT_TRUE(runUntil([this] { return watchCount() == folderCount; }));
  EXPECT_EQ(model->monitoredFolders().value(), folders);
  EXPECT_EQ(Resources{}.threads, before.threads);
  EXPECT_EQ(Resources{}.descriptors, before.descriptors);

  std::atomic<bool> ending = false;
  std::int64_t mostAtOnce = 0;
  std::thread renaming([&] { renameAtRandom(ending); });
  std::mt19937 random(42);
  for (int step = 0; step < 100; ++step) {
    addOrRemoveAtRandom(random);
    ASSERT_TRUE(runUntil([] { return true; }));
    mostAtOnce = std::max(mostAtOnce, model->activeConversionCount());
  }
  EXPECT_TRUE(runUntil([&] {
    mostAtOnce = std::max(mostAtOnce, model->activeConversionCount());
    return mostAtOnce > 2;
  })) << "conversions of several folders at once";

  model->stopAllMonitoring();
  model->loadSavedFolders();
  EXPECT_TRUE(settle());
  const std::vector<FileURL> listed = model->monitoredFolders().value();
  EXPECT_EQ(std::set(listed.begin(), listed.end()).size(), listed.size());

  while (!model->monitoredFolders().value().empty()) {
    model->removeFolder(random() % model->monitoredFolders().value().size());
    if (random() % 8 == 0) {
      EXPECT_TRUE(runUntil([] { return true; }));
    }
  }
  ending = true;
  renaming.join();
  EXPECT_TRUE(runUntil([this] { return scope->empty(); })) << "tasks are left";
  EXPECT_TRUE(runUntil([&] { return Resources() == before; }))
      << Resources().watches << " watches, " << Resources().descriptors << " descriptors of "
      << before.descriptors << ", " << Resources().threads << " threads of " << before.threads;
  EXPECT_EQ(model->activeConversionCount(), 0);
  EXPECT_FALSE(model->isProcessing().value());
  EXPECT_EQ(defaults.dataArrayForKey(BookmarkManager::userDefaultsKey), std::vector<Data>{});
  expectEveryFileWhole();
}

}  // namespace
}  // namespace kestrivane::test

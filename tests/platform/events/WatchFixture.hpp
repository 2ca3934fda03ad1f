// A service on the real kernel, a folder of its own, and what tests do with both.
//
// Thread-safety: belongs to the test's thread. Ownership: owns everything; a watched folder is
// stopped when it goes, before its recorder.
#pragma once

#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include <gtest/gtest.h>

#include "platform/linux/events/InotifyFileEventService.hpp"
#include "platform/linux/system/SerialQueue.hpp"
#include "platform/linux/system/ThreadPool.hpp"
#include "tests/platform/events/EventRecorder.hpp"
#include "tests/support/FakeLog.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {

inline constexpr std::uint32_t streamFlags = fileEventStreamUseCFTypes | fileEventStreamNoDefer |
                                             fileEventStreamWatchRoot | fileEventStreamFileEvents;
inline constexpr std::uint32_t file = fileEventItemIsFile;
inline constexpr std::uint32_t directory = fileEventItemIsDir;
inline constexpr std::uint32_t renamed = fileEventItemRenamed;
inline constexpr std::uint32_t created = fileEventItemCreated;
inline constexpr std::uint32_t removed = fileEventItemRemoved;
inline constexpr std::uint32_t modified = fileEventItemModified;

/// The watches of all inotify instances of this process, as the kernel counts them.
std::size_t kernelWatchCount();

/// Waits until `condition` holds; for what no event announces. False when it never does.
bool eventually(const std::function<bool()>& condition);

/// How many directories there are at `path` and below it, links not followed.
std::size_t directoryCount(const std::string& path);

class WatchFixture : public testing::Test {
 protected:
  class Watched {
   public:
    Watched(FileEventService& service, std::shared_ptr<Executor> queue, const std::string& path)
        : stream(service.createStream({.paths = {path},
                                       .sinceWhen = service.currentEventId(),
                                       .latency = std::chrono::milliseconds(100),
                                       .flags = streamFlags},
                                      std::move(queue), recorder.callback())) {}
    ~Watched() {
      if (stream) stream->stop();
    }

    EventRecorder recorder;
    std::unique_ptr<FileEventStream> stream;
  };

  ~WatchFixture() override { pool_->finish(); }

  std::string path(const std::string& name) const { return folder.path() + "/" + name; }
  void makeFile(const std::string& name) const { std::ofstream(path(name)).put('x'); }
  void makeDirectories(const std::string& name) const {
    std::filesystem::create_directories(path(name));
  }
  void move(const std::string& from, const std::string& to) const {
    ASSERT_EQ(0, ::rename(path(from).c_str(), path(to).c_str())) << from << " to " << to;
  }

  std::shared_ptr<Executor> makeQueue() {
    return std::make_shared<SerialQueue>(pool_, "test.events");
  }

  /// Starts watching and waits until everything is watched.
  std::unique_ptr<Watched> watch(const std::string& watchedPath) {
    const std::size_t before = announced(watchedPath);
    auto watched = std::make_unique<Watched>(service, makeQueue(), watchedPath);
    EXPECT_NE(nullptr, watched->stream);
    EXPECT_TRUE(watched->stream->start());
    EXPECT_EQ(WatchCoverage::complete, waitForAnnouncement(watchedPath, before));
    return watched;
  }

  WatchCoverage waitForAnnouncement(const std::string& watchedPath, std::size_t countBefore = 0) {
    std::unique_lock lock(mutex_);
    const bool came = changed_.wait_for(lock, std::chrono::seconds(60), [&] {
      return announcements_[watchedPath].size() > countBefore;
    });
    EXPECT_TRUE(came) << watchedPath << " was not announced";
    return came ? announcements_[watchedPath].back() : WatchCoverage::none;
  }

  /// Makes a file in each directory of `watched`, renames it and waits for the report: proof that
  /// every directory is watched under its own path.
  void expectEveryDirectoryWatched(Watched& watched, const std::string& root) {
    std::vector<std::string> directories{root};
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
      if (entry.is_directory() && !entry.is_symlink()) directories.push_back(entry.path());
    }
    for (const std::string& each : directories) {
      std::ofstream(each + "/probe.png").put('x');
      ASSERT_EQ(0, ::rename((each + "/probe.png").c_str(), (each + "/probe.jpg").c_str()));
    }
    for (const std::string& each : directories)
      ASSERT_TRUE(watched.recorder.waitForRename(each + "/probe.png", each + "/probe.jpg")) << each;
  }

  TemporaryFolder folder;
  FakeLog log;

 private:
  std::size_t announced(const std::string& watchedPath) {
    const std::lock_guard lock(mutex_);
    return announcements_[watchedPath].size();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<std::string, std::vector<WatchCoverage>> announcements_;
  std::shared_ptr<ThreadPool> pool_ = ThreadPool::create("test", 2);

  std::function<void()> whileAnnouncing_;
  InotifyFileEventService service_{log,
                                   [this](const std::string& watchedPath, WatchCoverage coverage) {
                                     std::function<void()> whileAnnouncing;
                                     {
                                       const std::lock_guard lock(mutex_);
                                       announcements_[watchedPath].push_back(coverage);
                                       whileAnnouncing = whileAnnouncing_;
                                       changed_.notify_all();
                                     }
                                     if (whileAnnouncing) whileAnnouncing();
                                   }};

 protected:
  /// `action` is called on the service's thread with every announcement from now on: while it runs,
  /// no event is read.
  void setWhileAnnouncing(std::function<void()> action) {
    const std::lock_guard lock(mutex_);
    whileAnnouncing_ = std::move(action);
  }

  InotifyFileEventService& service = service_;
};

}  // namespace kestrivane::test

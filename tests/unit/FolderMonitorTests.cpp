#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "async/TaskScope.hpp"
#include "monitor/FolderMonitor.hpp"
#include "tests/support/FakeDispatch.hpp"
#include "tests/support/FakeLog.hpp"
#include "tests/support/InMemoryFileSystem.hpp"

namespace kestrivane::test {
namespace {

constexpr std::uint32_t renamed = fileEventItemRenamed;

Task<void> collect(AsyncStream<FolderEvent> stream, std::vector<FolderEvent>* events, bool* ended) {
  while (const std::optional<FolderEvent> event = co_await stream.next())
    events->push_back(*event);
  *ended = true;
}

FolderEvent event(const std::string& oldPath, const std::string& newPath) {
  return FolderEvent::renamed(FileURL(oldPath), FileURL(newPath));
}

class FolderMonitorTest : public testing::Test {
 protected:
  FolderMonitorTest() { files.createDirectory("/w"); }

  void start() {
    scope.spawn(collect(monitor->start(), &events, &ended));
    dispatch.loop.runUntilIdle();
  }

  /// Delivers one batch of item-renamed events.
  void renameBatch(const std::vector<std::string>& paths) {
    batch(paths, std::vector<std::uint32_t>(paths.size(), renamed));
  }
  void batch(const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags) {
    files.emit(paths, flags);
    dispatch.loop.runUntilIdle();
  }

  FakeDispatch dispatch;
  FakeLog log;
  InMemoryFileSystem files;
  TaskScope scope{dispatch.loop};
  std::shared_ptr<FolderMonitor> monitor =
      FolderMonitor::create(FileURL("/w"), {files, files, log, dispatch});
  std::vector<FolderEvent> events;
  bool ended = false;
};

TEST_F(FolderMonitorTest, AVanishedPathAndAnExistingOneYieldOneRenamedEventAndOneLogLine) {
  files.writeFile("/w/a.jpg", "x");
  start();
  renameBatch({"/w/a.png", "/w/a.jpg"});
  EXPECT_EQ(events, std::vector{event("/w/a.png", "/w/a.jpg")});
  EXPECT_EQ(log.messages(LogLevel::info).back(),
            "Файл переименован с изменением расширения:\n/w/a.png ->\n/w/a.jpg");
}

TEST_F(FolderMonitorTest, ExtensionsThatDifferInCaseOnlyYieldNothing) {
  files.writeFile("/w/a.png", "x");
  start();
  renameBatch({"/w/a.PNG", "/w/a.png"});
  EXPECT_TRUE(events.empty());
}

TEST_F(FolderMonitorTest, ExtensionsAreLowerCasedWithUnicodeInMind) {
  files.writeFile("/w/a.äöü", "x");
  files.writeFile("/w/ФОТО.jpg", "x");
  start();
  renameBatch({"/w/a.ÄÖÜ", "/w/a.äöü"});
  EXPECT_TRUE(events.empty());
  renameBatch({"/w/ФОТО.PNG", "/w/ФОТО.jpg"});
  EXPECT_EQ(events, std::vector{event("/w/ФОТО.PNG", "/w/ФОТО.jpg")});
}

TEST_F(FolderMonitorTest, AnEmptyExtensionDiffersFromAnyOther) {
  files.writeFile("/w/photo.jpg", "x");
  files.writeFile("/w/other", "x");
  start();
  renameBatch({"/w/photo", "/w/photo.jpg"});
  renameBatch({"/w/other.jpg", "/w/other"});
  EXPECT_EQ(events,
            (std::vector{event("/w/photo", "/w/photo.jpg"), event("/w/other.jpg", "/w/other")}));
}

TEST_F(FolderMonitorTest, OfTwoVanishedPathsTheLaterOneIsPaired) {
  files.writeFile("/w/c.jpg", "x");
  start();
  renameBatch({"/w/a.png", "/w/b.gif", "/w/c.jpg"});
  EXPECT_EQ(events, std::vector{event("/w/b.gif", "/w/c.jpg")});
}

TEST_F(FolderMonitorTest, AnExistingPathWithoutAVanishedOneBeforeItYieldsNothing) {
  files.writeFile("/w/a.jpg", "x");
  start();
  renameBatch({"/w/a.jpg"});
  renameBatch({"/w/a.jpg", "/w/a.png"});
  EXPECT_TRUE(events.empty());
}

TEST_F(FolderMonitorTest, HalvesInTwoBatchesAreNotPaired) {
  files.writeFile("/w/a.jpg", "x");
  start();
  renameBatch({"/w/a.png"});
  renameBatch({"/w/a.jpg"});
  EXPECT_TRUE(events.empty());
}

TEST_F(FolderMonitorTest, HalvesInUnrelatedSubfoldersOfOneBatchArePaired) {
  files.writeFile("/w/y/in.jpg", "x");
  start();
  renameBatch({"/w/x/out.png", "/w/y/in.jpg"});
  EXPECT_EQ(events, std::vector{event("/w/x/out.png", "/w/y/in.jpg")});
}

TEST_F(FolderMonitorTest, APairIsUsedUpByItsExistingPath) {
  files.writeFile("/w/a.jpg", "x");
  files.writeFile("/w/b.jpg", "x");
  start();
  renameBatch({"/w/a.png", "/w/a.jpg", "/w/b.jpg"});
  EXPECT_EQ(events.size(), 1U);
}

TEST_F(FolderMonitorTest, EventsForAPathBeingProcessedAndBelowItAreDroppedWithADebugLine) {
  files.writeFile("/w/a.jpg", "x");
  files.writeFile("/w/a.jpg/inner", "x");
  files.writeFile("/w/a.jpg2", "x");
  start();
  monitor->ignoreEvents(FileURL("/w/a.jpg"));
  renameBatch({"/w/a.png", "/w/a.jpg"});
  renameBatch({"/w/a.png", "/w/a.jpg/inner"});
  EXPECT_TRUE(events.empty());
  EXPECT_EQ(log.messages(LogLevel::debug),
            (std::vector<std::string>{"Игнорируем событие для: /w/a.jpg",
                                      "Игнорируем событие для: /w/a.jpg/inner"}));
  renameBatch({"/w/a.png", "/w/a.jpg2"});
  EXPECT_EQ(events, std::vector{event("/w/a.png", "/w/a.jpg2")});
}

TEST_F(FolderMonitorTest, AnIgnoredEventLeavesThePendingOldName) {
  files.writeFile("/w/busy.jpg", "x");
  files.writeFile("/w/a.jpg", "x");
  start();
  monitor->ignoreEvents(FileURL("/w/busy.jpg"));
  renameBatch({"/w/a.png", "/w/busy.jpg", "/w/a.jpg"});
  EXPECT_EQ(events, std::vector{event("/w/a.png", "/w/a.jpg")});
}

TEST_F(FolderMonitorTest, EventsAreReportedAgainAfterStopIgnoringEvents) {
  files.writeFile("/w/a.jpg", "x");
  start();
  const FileURL url("/w/a.jpg");
  monitor->ignoreEvents(url);
  monitor->ignoreEvents(url);
  monitor->stopIgnoringEvents(url);
  monitor->stopIgnoringEvents(url);
  renameBatch({"/w/a.png", "/w/a.jpg"});
  EXPECT_EQ(events.size(), 1U);
}

TEST_F(FolderMonitorTest, AModificationOnlyEventChangesNothingAndKeepsThePendingOldName) {
  files.writeFile("/w/a.jpg", "x");
  files.writeFile("/w/b.gif", "x");
  start();
  files.existenceQueries.clear();
  batch({"/w/a.png", "/w/b.gif", "/w/a.jpg"}, {renamed, fileEventItemModified, renamed});
  EXPECT_EQ(events, std::vector{event("/w/a.png", "/w/a.jpg")});
  EXPECT_EQ(files.existenceQueries, (std::vector<std::string>{"/w/a.png", "/w/a.jpg"}));
}

TEST_F(FolderMonitorTest, DirectoriesAndHiddenFilesAreReportedLikeAnyOther) {
  files.createDirectory("/w/album.jpg");
  files.writeFile("/w/.git/.x.jpg", "x");
  start();
  renameBatch({"/w/album.png", "/w/album.jpg"});
  renameBatch({"/w/.git/.x.png", "/w/.git/.x.jpg"});
  EXPECT_EQ(events.size(), 2U);
}

TEST_F(FolderMonitorTest, ARealRenameIsReported) {
  files.writeFile("/w/deep/a.png", "x");
  start();
  files.rename("/w/deep/a.png", "/w/deep/a.jpg");
  dispatch.loop.runUntilIdle();
  EXPECT_EQ(events, std::vector{event("/w/deep/a.png", "/w/deep/a.jpg")});
}

TEST_F(FolderMonitorTest, AsksForFileEventsFromNowOnWithATenthOfASecondOfLatency) {
  start();
  ASSERT_EQ(files.configurations.size(), 1U);
  const FileEventStreamConfiguration& configuration = files.configurations.front();
  EXPECT_EQ(configuration.paths, std::vector<std::string>{"/w"});
  EXPECT_EQ(configuration.sinceWhen, files.currentEventId());
  EXPECT_EQ(configuration.latency, std::chrono::milliseconds(100));
  EXPECT_EQ(configuration.flags, 0x1BU);
}

TEST_F(FolderMonitorTest, LogsItsStartAndItsStop) {
  start();
  monitor->stop();
  EXPECT_EQ(
      log.entries,
      (std::vector<LogEntry>{
          {LogLevel::info, "com.kestrivane", "FolderMonitor", "Начат мониторинг папки: /w"},
          {LogLevel::info, "com.kestrivane", "FolderMonitor", "Остановлен мониторинг папки: /w"}}));
}

TEST_F(FolderMonitorTest, StopBeforeStartAndStopTwiceLogNothing) {
  monitor->stop();
  EXPECT_TRUE(log.entries.empty());
  start();
  monitor->stop();
  const std::size_t count = log.entries.size();
  monitor->stop();
  EXPECT_EQ(log.entries.size(), count);
}

TEST_F(FolderMonitorTest, AfterStopTheStreamEndsOnceItsBufferedEventsAreConsumed) {
  files.writeFile("/w/a.jpg", "x");
  AsyncStream<FolderEvent> stream = monitor->start();
  renameBatch({"/w/a.png", "/w/a.jpg"});
  monitor->stop();
  renameBatch({"/w/a.gif", "/w/a.jpg"});
  scope.spawn(collect(std::move(stream), &events, &ended));
  dispatch.loop.runUntilIdle();
  EXPECT_EQ(events, std::vector{event("/w/a.png", "/w/a.jpg")});
  EXPECT_TRUE(ended);
}

TEST_F(FolderMonitorTest, AFolderThatCannotBeWatchedIsLoggedAndItsStreamEndsAtOnce) {
  files.streamsFail = true;
  start();
  EXPECT_TRUE(ended);
  EXPECT_EQ(log.messages(LogLevel::error),
            std::vector<std::string>{"Ошибка при создании FSEventStream"});
  monitor->stop();
  EXPECT_EQ(log.entries.size(), 1U);
}

TEST_F(FolderMonitorTest, DestroyingTheMonitorStopsItAndEndsItsStream) {
  start();
  monitor.reset();
  dispatch.loop.runUntilIdle();
  EXPECT_TRUE(ended);
  EXPECT_EQ(log.messages(LogLevel::info).back(), "Остановлен мониторинг папки: /w");
}

TEST_F(FolderMonitorTest, IsMadeWithoutTouchingTheFileSystem) {
  files.existenceQueries.clear();
  const auto other = FolderMonitor::create(FileURL("/nowhere"), {files, files, log, dispatch});
  EXPECT_TRUE(files.configurations.empty());
  EXPECT_TRUE(files.existenceQueries.empty());
  EXPECT_EQ(other->folderURL(), FileURL("/nowhere"));
}

using FolderMonitorDeathTest = FolderMonitorTest;

TEST_F(FolderMonitorDeathTest, FewerFlagWordsThanPathsEndTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  start();
  EXPECT_DEATH(batch({"/w/a.png", "/w/a.jpg"}, {renamed}), "");
}

}  // namespace
}  // namespace kestrivane::test

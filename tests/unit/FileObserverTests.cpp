#include <optional>

#include <gtest/gtest.h>

#include "monitor/FileObserver.hpp"
#include "tests/support/FakeDispatch.hpp"
#include "tests/support/InMemoryFileSystem.hpp"

namespace kestrivane::test {
namespace {

class FileObserverTest : public testing::Test {
 protected:
  FileObserverTest() { files.createDirectory("/w"); }

  void observe() {
    observer.emplace(files, dispatch, FileURL("/w/list"), [this] { ++changes; });
  }

  int changesAfterAll() {
    dispatch.loop.runUntilIdle();
    return changes;
  }

  FakeDispatch dispatch;
  InMemoryFileSystem files;
  std::optional<FileObserver> observer;
  int changes = 0;
};

TEST_F(FileObserverTest, TellsWhenTheFileIsMadeReplacedAndRemoved) {
  observe();
  EXPECT_EQ(changesAfterAll(), 0);
  files.writeFile("/w/list", "x");
  EXPECT_EQ(changesAfterAll(), 1);
  files.writeFile("/w/new", "y");
  EXPECT_EQ(changesAfterAll(), 1);
  files.rename("/w/new", "/w/list");
  EXPECT_EQ(changesAfterAll(), 2);
  files.remove("/w/list");
  EXPECT_EQ(changesAfterAll(), 3);
}

TEST_F(FileObserverTest, SaysNothingOfOtherFiles) {
  observe();
  files.writeFile("/w/list.lock", "x");
  files.createDirectory("/w/deep");
  files.writeFile("/w/deep/list", "x");
  EXPECT_EQ(changesAfterAll(), 0);
}

TEST_F(FileObserverTest, TellsWhenEventsWereLost) {
  observe();
  files.emit({"/w"}, {fileEventMustScanSubdirs | fileEventKernelDropped});
  EXPECT_EQ(changesAfterAll(), 1);
}

TEST_F(FileObserverTest, TellsNothingOnceItIsGone) {
  observe();
  files.writeFile("/w/list", "x");
  observer.reset();
  files.writeFile("/w/list", "y");
  EXPECT_EQ(changesAfterAll(), 0);
}

TEST_F(FileObserverTest, IsSilentWhereTheFolderCannotBeWatched) {
  files.streamsFail = true;
  observe();
  files.writeFile("/w/list", "x");
  EXPECT_EQ(changesAfterAll(), 0);
}

}  // namespace
}  // namespace kestrivane::test

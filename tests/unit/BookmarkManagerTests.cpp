#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "state/BookmarkManager.hpp"
#include "tests/support/FakeBookmarks.hpp"
#include "tests/support/FakeLog.hpp"
#include "tests/support/FakeUserDefaults.hpp"
#include "tests/support/InMemoryFileSystem.hpp"

namespace kestrivane::test {
namespace {

using Stored = std::vector<std::optional<Data>>;
using URLs = std::vector<FileURL>;
using Lines = std::vector<std::string>;

class BookmarkManagerTest : public testing::Test {
 protected:
  BookmarkManagerTest() {
    for (const char* const folder : {"/a", "/b", "/c"})
      files.createDirectory(folder);
  }

  Stored& stored() { return defaults.storedArrays[std::string(BookmarkManager::userDefaultsKey)]; }

  InMemoryFileSystem files;
  FakeBookmarks bookmarks{files};
  FakeUserDefaults defaults;
  FakeLog log;
  BookmarkManager manager{defaults, bookmarks, log};
};

TEST_F(BookmarkManagerTest, DoesNothingWhenItIsMade) {
  EXPECT_TRUE(defaults.writes.empty());
  EXPECT_TRUE(bookmarks.accesses.empty());
}

TEST_F(BookmarkManagerTest, StoresABookmarkForEachFolderInTheOrderOfTheList) {
  manager.save({FileURL("/b"), FileURL("/a")});
  EXPECT_EQ(defaults.writes, Lines{"com.kestrivane.monitoredBookmarks"});
  EXPECT_EQ(stored(), (Stored{FakeBookmarks::of("/b"), FakeBookmarks::of("/a")}));
  EXPECT_TRUE(bookmarks.accesses.empty());
}

TEST_F(BookmarkManagerTest, StoresWhatItIsGivenEvenTwice) {
  manager.save({FileURL("/a"), FileURL("/a")});
  EXPECT_EQ(stored().size(), 2U);
}

TEST_F(BookmarkManagerTest, StoresAnEmptyListAsAnEmptyArray) {
  manager.save({FileURL("/a")});
  manager.save({});
  EXPECT_EQ(stored(), Stored{});
  EXPECT_EQ(manager.load(), URLs{});
}

TEST_F(BookmarkManagerTest, LeavesOutAndLogsAFolderThatNoBookmarkCanBeMadeOf) {
  manager.save({FileURL("/a"), FileURL("/gone"), FileURL("/b")});
  EXPECT_EQ(stored(), (Stored{FakeBookmarks::of("/a"), FakeBookmarks::of("/b")}));
  const LogEntry expected{LogLevel::error, "com.kestrivane", "BookmarkManager",
                          "Ошибка создания закладки для /gone: No folder at /gone"};
  EXPECT_EQ(log.entries, std::vector{expected});
}

TEST_F(BookmarkManagerTest, LoadsNothingWhereNothingIsStored) {
  EXPECT_EQ(manager.load(), URLs{});
  EXPECT_TRUE(log.entries.empty());
}

TEST_F(BookmarkManagerTest, LoadsTheFoldersInTheirOrderWithAccessStarted) {
  manager.save({FileURL("/c"), FileURL("/a"), FileURL("/b")});
  EXPECT_EQ(manager.load(), (URLs{FileURL("/c"), FileURL("/a"), FileURL("/b")}));
  EXPECT_EQ(bookmarks.accesses, (Lines{"start /c", "start /a", "start /b"}));
  EXPECT_EQ(defaults.writes.size(), 1U);
}

TEST_F(BookmarkManagerTest, LoadsNothingOfAnArrayWithAnElementThatIsNotData) {
  stored() = {FakeBookmarks::of("/a"), std::nullopt, FakeBookmarks::of("/b")};
  EXPECT_EQ(manager.load(), URLs{});
  EXPECT_TRUE(bookmarks.accesses.empty());
  EXPECT_TRUE(log.entries.empty());
}

TEST_F(BookmarkManagerTest, SkipsAndLogsBookmarksThatDoNotResolveAndLeavesThemStored) {
  const Stored before{FakeBookmarks::of("/c"), FakeBookmarks::of("/gone"), dataOf("damaged"),
                      FakeBookmarks::of("/a")};
  stored() = before;
  EXPECT_EQ(manager.load(), (URLs{FileURL("/c"), FileURL("/a")}));
  EXPECT_EQ(log.messages(LogLevel::error),
            (Lines{"Ошибка разрешения закладки: No folder at /gone",
                   "Ошибка разрешения закладки: A damaged bookmark"}));
  EXPECT_EQ(stored(), before);
}

TEST_F(BookmarkManagerTest, DropsAFolderThatAccessIsNotGrantedToWithoutAWord) {
  manager.save({FileURL("/a"), FileURL("/b")});
  bookmarks.inaccessible.insert("/a");
  EXPECT_EQ(manager.load(), URLs{FileURL("/b")});
  EXPECT_TRUE(log.entries.empty());
}

TEST_F(BookmarkManagerTest, NamesTheFoldersThatItLeavesOut) {
  stored() = {FakeBookmarks::of("/c"), FakeBookmarks::of("/gone"), dataOf("damaged"),
              FakeBookmarks::of("/a")};
  bookmarks.inaccessible.insert("/c");
  const auto folders = manager.loadAll();
  ASSERT_TRUE(folders);
  EXPECT_EQ(folders->accessible, URLs{FileURL("/a")});
  EXPECT_EQ(folders->named, (URLs{FileURL("/c"), FileURL("/gone"), FileURL("/a")}));
}

TEST_F(BookmarkManagerTest, TellsWhichFoldersItHasLeftOut) {
  EXPECT_EQ(manager.save({FileURL("/a"), FileURL("/gone")}), URLs{FileURL("/gone")});
  EXPECT_EQ(manager.save({FileURL("/a")}), URLs{});
}

TEST_F(BookmarkManagerTest, LogsAFolderThatIsAwayOnceEachTimeThatItGoes) {
  stored() = {FakeBookmarks::of("/a"), FakeBookmarks::of("/gone")};
  const auto failures = [this] { return log.messages(LogLevel::error).size(); };
  EXPECT_EQ(manager.load(), URLs{FileURL("/a")});
  manager.loadAll();
  manager.loadAll();
  EXPECT_EQ(failures(), 1U);
  files.createDirectory("/gone");
  manager.loadAll();
  files.remove("/gone");
  manager.loadAll();
  manager.loadAll();
  EXPECT_EQ(failures(), 2U);
  manager.load();
  EXPECT_EQ(failures(), 3U);
}

TEST_F(BookmarkManagerTest, TellsNoListFromAnEmptyOne) {
  EXPECT_FALSE(manager.loadAll());
  stored() = {FakeBookmarks::of("/a"), std::nullopt};
  EXPECT_FALSE(manager.loadAll());
  stored() = {};
  ASSERT_TRUE(manager.loadAll());
  EXPECT_EQ(manager.loadAll()->named, URLs{});
}

TEST_F(BookmarkManagerTest, UsesAStaleBookmarkAsItIsAndDoesNotRewriteIt) {
  manager.save({FileURL("/a")});
  bookmarks.stale.insert("/a");
  EXPECT_EQ(manager.load(), URLs{FileURL("/a")});
  EXPECT_EQ(defaults.writes.size(), 1U);
}

}  // namespace
}  // namespace kestrivane::test

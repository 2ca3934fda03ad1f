// What becomes of the watched folders when the saved list changes, or a folder of it goes.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/unit/AppViewModelFixture.hpp"

namespace kestrivane::test {
namespace {

using AppViewModelSavedListTest = ViewModelFixture;

TEST_F(AppViewModelSavedListTest, TakesOverWhatAnotherProgramHasMadeOfTheList) {
  save({"/a", "/b"});
  make();
  settle();
  save({"/c", "/b"});
  model->followSavedFolders();
  settle();
  EXPECT_EQ(folders(), (Lines{"/b", "/c"}));
  EXPECT_EQ(watched(), (Lines{"/a", "/b", "/c"}));
  EXPECT_FALSE(model->isMonitored(FileURL("/a")));
  EXPECT_TRUE(defaults.writes.empty());
  rename("/a/left.png", "/a/left.jpg");
  rename("/b/photo.png", "/b/photo.jpg");
  rename("/c/photo.png", "/c/photo.jpg");
  EXPECT_EQ(script->sources, (Lines{"/b/photo.jpg", "/c/photo.jpg"}));
}

TEST_F(AppViewModelSavedListTest, KeepsOneAccessOpenForEachFolderThatItTakesOver) {
  save({"/a"});
  make();
  settle();
  save({"/a", "/b"});
  model->followSavedFolders();
  EXPECT_EQ(bookmarks.accesses, (Lines{"start /a", "start /a", "start /b", "stop /a"}));
  save({"/b"});
  model->followSavedFolders();
  EXPECT_EQ((Lines{bookmarks.accesses.end() - 3, bookmarks.accesses.end()}),
            (Lines{"start /b", "stop /b", "stop /a"}));
}

TEST_F(AppViewModelSavedListTest, WatchesASavedFolderOnceItCanBeFound) {
  save({"/disk/photos", "/a"});
  make();
  settle();
  EXPECT_EQ(folders(), Lines{"/a"});
  files.createDirectory("/disk");
  files.createDirectory("/disk/photos");
  model->followSavedFolders();
  settle();
  EXPECT_EQ(folders(), (Lines{"/a", "/disk/photos"}));
  rename("/disk/photos/photo.png", "/disk/photos/photo.jpg");
  EXPECT_EQ(script->sources, Lines{"/disk/photos/photo.jpg"});
}

TEST_F(AppViewModelSavedListTest, KeepsAFolderThatIsNotThereForAsLongAsItIsSaved) {
  save({"/a", "/b"});
  make();
  settle();
  files.remove("/a");
  bookmarks.inaccessible.insert("/b");
  model->followSavedFolders();
  EXPECT_EQ(folders(), (Lines{"/a", "/b"}));
  EXPECT_TRUE(model->isMonitored(FileURL("/a")));
  EXPECT_TRUE(model->isMonitored(FileURL("/b")));
  save({"/b"});
  model->followSavedFolders();
  EXPECT_EQ(folders(), Lines{"/b"});
}

TEST_F(AppViewModelSavedListTest, KeepsAFolderWhoseDiskIsAwayWhenAnotherOneIsAdded) {
  save({"/a"});
  make();
  settle();
  files.remove("/a");
  add({"/b"});
  model->followSavedFolders();  // the program's own write is a change of the list too
  settle();
  EXPECT_EQ(folders(), (Lines{"/a", "/b"}));
  EXPECT_EQ(saved(), (Lines{"/a", "/b"}));
  EXPECT_EQ(log.messages(LogLevel::error), Lines{"Ошибка разрешения закладки: No folder at /a"});

  files.createDirectory("/a");
  model->followSavedFolders();
  settle();
  rename("/a/photo.png", "/a/photo.jpg");
  EXPECT_EQ(script->sources, Lines{"/a/photo.jpg"});

  files.remove("/a");
  model->removeFolder(0);
  model->followSavedFolders();
  EXPECT_EQ(folders(), Lines{"/b"});
  EXPECT_EQ(saved(), Lines{"/b"});
}

TEST_F(AppViewModelSavedListTest, KeepsAFolderThatCouldNotBeSavedUntilSomebodyRemovesIt) {
  make();
  settle();
  bookmarks.unnameable.insert("/a");
  add({"/a", "/b"});
  EXPECT_EQ(saved(), Lines{"/b"});
  model->followSavedFolders();
  EXPECT_EQ(folders(), (Lines{"/a", "/b"}));

  save({"/a", "/b"});  // somebody else could
  model->followSavedFolders();
  save({"/b"});
  model->followSavedFolders();
  EXPECT_EQ(folders(), Lines{"/b"});
}

TEST_F(AppViewModelSavedListTest, SavesOnlyWhatIsWatchedWhenAFolderIsAddedAfterAPartialRestore) {
  save({"/b", "/gone", "/a"});
  make();
  settle();
  add({"/c"});
  model->followSavedFolders();
  settle();
  EXPECT_EQ(folders(), (Lines{"/b", "/a", "/c"}));
  EXPECT_EQ(watched(), (Lines{"/b", "/a", "/c"}));
  EXPECT_EQ(saved(), (Lines{"/b", "/a", "/c"}));
}

TEST_F(AppViewModelSavedListTest, KeepsItsFoldersWhereThereIsNoListOrOneThatCannotBeRead) {
  save({"/a"});
  make();
  settle();
  defaults.storedArrays.begin()->second.emplace_back(std::nullopt);
  model->followSavedFolders();
  EXPECT_EQ(folders(), Lines{"/a"});
  defaults.storedArrays.clear();
  model->followSavedFolders();
  EXPECT_EQ(folders(), Lines{"/a"});
  save({});
  model->followSavedFolders();
  EXPECT_EQ(folders(), Lines{});
}

}  // namespace
}  // namespace kestrivane::test

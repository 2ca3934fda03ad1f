#include <random>

#include <unistd.h>

#include "tests/platform/events/WatchFixture.hpp"

namespace kestrivane::test {
namespace {

class InotifyDirectoryTest : public WatchFixture {};

TEST_F(InotifyDirectoryTest, EverythingThatIsThereBeforehandIsWatched) {
  for (int i = 0; i < 20; ++i)
    makeDirectories("a" + std::to_string(i) + "/b/c/d/e/f");
  const auto watched = watch(folder.path());
  EXPECT_EQ(directoryCount(folder.path()), kernelWatchCount());
  expectEveryDirectoryWatched(*watched, folder.path());
}

TEST_F(InotifyDirectoryTest, AFolderWithMoreSubfoldersThanFitIntoOneStepIsWatched) {
  for (int i = 0; i < 3000; ++i)
    makeDirectories("directory-with-a-long-name-" + std::to_string(i) + (i % 500 == 0 ? "/x" : ""));
  const auto watched = watch(folder.path());
  EXPECT_EQ(directoryCount(folder.path()), kernelWatchCount());
}

TEST_F(InotifyDirectoryTest, VeryDeepDirectoriesAreWatched) {
  std::string deep;
  for (int i = 0; i < 1500; ++i) {
    deep += "d/";
    std::filesystem::create_directory(path(deep));
  }
  const auto watched = watch(folder.path());
  EXPECT_EQ(1501U, kernelWatchCount());
  makeFile(deep + "x.png");
  move(deep + "x.png", deep + "x.jpg");
  EXPECT_TRUE(watched->recorder.waitForRename(path(deep + "x.png"), path(deep + "x.jpg")));
}

TEST_F(InotifyDirectoryTest, ADirectoryIsWatchedOnceItsCreationIsReported) {
  const auto watched = watch(folder.path());
  for (int i = 0; i < 25; ++i) {
    const std::string name = "d" + std::to_string(i);
    makeDirectories(name);
    ASSERT_TRUE(watched->recorder.waitFor(path(name), created | directory));
    makeFile(name + "/x.png");
    move(name + "/x.png", name + "/x.jpg");
    ASSERT_TRUE(watched->recorder.waitForRename(path(name + "/x.png"), path(name + "/x.jpg")));
  }
}

TEST_F(InotifyDirectoryTest, AMovedInTreeIsWatchedToTheBottomOnceItsArrivalIsReported) {
  makeDirectories("in");
  for (int i = 0; i < 50; ++i)
    makeDirectories("out/tree/a" + std::to_string(i) + "/b/c");
  makeFile("out/tree/a7/b/c/x.png");
  const auto watched = watch(path("in"));
  move("out/tree", "in/tree");
  ASSERT_TRUE(watched->recorder.waitFor(path("in/tree"), renamed | directory));
  move("in/tree/a7/b/c/x.png", "in/tree/a7/b/c/x.jpg");
  EXPECT_TRUE(
      watched->recorder.waitForRename(path("in/tree/a7/b/c/x.png"), path("in/tree/a7/b/c/x.jpg")));
  EXPECT_TRUE(watched->recorder.has(path("in/tree/a7/b/c/x.png"), created | file));
  EXPECT_EQ(directoryCount(path("in")), kernelWatchCount());
}

TEST_F(InotifyDirectoryTest, WhatIsMadeInAFreshDirectoryAtOnceIsReportedAsCreated) {
  const auto watched = watch(folder.path());
  for (int i = 0; i < 100; ++i) {
    makeDirectories(std::to_string(i) + "/a/b");
    makeFile(std::to_string(i) + "/a/b/x.png");
  }
  for (int i = 0; i < 100; ++i) {
    const std::string name = path(std::to_string(i));
    EXPECT_TRUE(watched->recorder.waitFor(name, created | directory));
    EXPECT_TRUE(watched->recorder.waitFor(name + "/a", created | directory));
    EXPECT_TRUE(watched->recorder.waitFor(name + "/a/b", created | directory));
    EXPECT_TRUE(watched->recorder.waitFor(name + "/a/b/x.png", created | file));
  }
  expectEveryDirectoryWatched(*watched, folder.path());
}

TEST_F(InotifyDirectoryTest, ARenamedDirectoryStaysWatchedUnderItsNewPathWithoutNewWatches) {
  makeDirectories("a/b/c");
  makeDirectories("other");
  const auto watched = watch(folder.path());
  const std::size_t before = kernelWatchCount();
  move("a", "other/renamed");
  ASSERT_TRUE(watched->recorder.waitForRename(path("a"), path("other/renamed")));
  expectEveryDirectoryWatched(*watched, folder.path());
  EXPECT_EQ(before, kernelWatchCount());
  for (const ReceivedEvent& event : watched->recorder.events())
    EXPECT_FALSE(event.path.starts_with(path("a/"))) << event.path;
}

TEST_F(InotifyDirectoryTest, NoRenameIsLostInADirectoryThatIsItselfBeingRenamed) {
  makeDirectories("d0/below");
  const auto watched = watch(folder.path());
  for (int i = 0; i < 300; ++i) {
    const std::string now = "d" + std::to_string(i + 1);
    move("d" + std::to_string(i), now);
    makeFile(now + "/below/" + std::to_string(i) + ".png");
    move(now + "/below/" + std::to_string(i) + ".png",
         now + "/below/" + std::to_string(i) + ".jpg");
  }
  // The path may be that of any moment in between; the rename must be there in any case.
  for (int i = 0; i < 300; ++i) {
    const std::string ending = "/below/" + std::to_string(i) + ".jpg";
    EXPECT_TRUE(watched->recorder.waitUntil([&] {
      return std::ranges::any_of(watched->recorder.events(), [&](const ReceivedEvent& event) {
        return event.flags == (renamed | file) && event.path.ends_with(ending);
      });
    })) << ending;
  }
  expectEveryDirectoryWatched(*watched, folder.path());
}

TEST_F(InotifyDirectoryTest, ADirectoryMovedOutIsLetGo) {
  makeDirectories("in/a/b/c");
  makeDirectories("in/stays");
  makeDirectories("out");
  const auto watched = watch(path("in"));
  EXPECT_EQ(5U, kernelWatchCount());
  move("in/a", "out/a");
  EXPECT_TRUE(eventually([] { return kernelWatchCount() == 2; }));
  makeFile("out/a/b/x.png");
  makeFile("in/stays/y.png");
  ASSERT_TRUE(watched->recorder.waitFor(path("in/stays/y.png"), modified | file));
  for (const ReceivedEvent& event : watched->recorder.events())
    EXPECT_EQ(std::string::npos, event.path.find("x.png")) << event.path;
}

TEST_F(InotifyDirectoryTest, RapidSequencesOfChangesLeaveEveryDirectoryWatchedOnce) {
  makeDirectories("in");
  makeDirectories("out");
  const auto watched = watch(path("in"));
  std::mt19937 random(7);
  const auto anyDirectory = [&](const std::string& top) {
    std::string at = path(top);
    for (int depth = 0; depth < 3 && random() % 3 != 0; ++depth)
      at += "/" + std::to_string(random() % 4);
    return at;
  };
  for (int i = 0; i < 20000; ++i) {
    const std::string from = anyDirectory(random() % 10 == 0 ? "out" : "in");
    const std::string to = anyDirectory(random() % 10 == 0 ? "out" : "in");
    std::error_code ignored;
    if (random() % 3 == 0) std::filesystem::remove(from, ignored);
    if (random() % 2 == 0) std::filesystem::create_directory(to, ignored);
    if (random() % 2 == 0 && from != path("in") && to != path("in"))
      std::filesystem::rename(from, to, ignored);
  }
  makeDirectories("in");
  makeFile("in/last");
  ASSERT_TRUE(watched->recorder.waitFor(path("in/last"), modified | file));
  EXPECT_TRUE(eventually([&] { return kernelWatchCount() == directoryCount(path("in")); }))
      << kernelWatchCount() << " watches, " << directoryCount(path("in")) << " directories";
  expectEveryDirectoryWatched(*watched, path("in"));
}

TEST_F(InotifyDirectoryTest, ChangesDuringTheFirstWalkAreNotMissed) {
  for (int i = 0; i < 400; ++i)
    makeDirectories("a" + std::to_string(i % 20) + "/b" + std::to_string(i) + "/c");
  Watched watched(service, makeQueue(), folder.path());
  watched.stream->start();
  for (int i = 0; i < 400; ++i) {
    const std::string parent = "a" + std::to_string(i % 20) + "/";
    makeDirectories(parent + "new" + std::to_string(i) + "/x/y");
    move(parent + "b" + std::to_string(i),
         "a" + std::to_string((i + 7) % 20) + "/moved" + std::to_string(i));
  }
  EXPECT_EQ(WatchCoverage::complete, waitForAnnouncement(folder.path()));
  expectEveryDirectoryWatched(watched, folder.path());
  EXPECT_TRUE(eventually([&] { return kernelWatchCount() == directoryCount(folder.path()); }));
}

TEST_F(InotifyDirectoryTest, LinksInsideTheFolderAreNotFollowed) {
  makeDirectories("outside");
  makeDirectories("in/a");
  std::filesystem::create_directory_symlink(path("outside"), path("in/link"));
  const auto watched = watch(path("in"));
  EXPECT_EQ(2U, kernelWatchCount());
  std::filesystem::create_directory_symlink(path("outside"), path("in/a/later"));
  ASSERT_TRUE(watched->recorder.waitFor(path("in/a/later"), created | file));
  EXPECT_EQ(2U, kernelWatchCount());
}

TEST_F(InotifyDirectoryTest, TheFolderItselfMayBeALinkAndIsReportedUnderItsOwnSpelling) {
  makeDirectories("real/a");
  makeFile("real/a/x.png");
  std::filesystem::create_directory_symlink(path("real"), path("link"));
  const auto linked = watch(path("link"));
  const auto real = watch(path("real"));
  EXPECT_EQ(2U, kernelWatchCount());
  move("real/a/x.png", "real/a/x.jpg");
  EXPECT_TRUE(linked->recorder.waitForRename(path("link/a/x.png"), path("link/a/x.jpg")));
  EXPECT_TRUE(real->recorder.waitForRename(path("real/a/x.png"), path("real/a/x.jpg")));
}

TEST_F(InotifyDirectoryTest, FoldersInsideEachOtherAndWatchedTwiceWork) {
  makeDirectories("a/b/c");
  makeFile("a/b/x.png");
  const auto outer = watch(path("a"));
  auto inner = watch(path("a/b"));
  const auto again = watch(path("a/b"));
  EXPECT_EQ(3U, kernelWatchCount());
  move("a/b/x.png", "a/b/x.jpg");
  for (Watched* const each : {outer.get(), inner.get(), again.get()})
    EXPECT_TRUE(each->recorder.waitForRename(path("a/b/x.png"), path("a/b/x.jpg")));

  inner.reset();
  move("a/b/x.jpg", "a/b/x.gif");
  EXPECT_TRUE(outer->recorder.waitForRename(path("a/b/x.jpg"), path("a/b/x.gif")));
  EXPECT_TRUE(again->recorder.waitForRename(path("a/b/x.jpg"), path("a/b/x.gif")));
  EXPECT_EQ(3U, kernelWatchCount());
}

TEST_F(InotifyDirectoryTest, AMoveBetweenTwoWatchedFoldersMovesTheDirectoryToTheOtherStream) {
  makeDirectories("a/d/e");
  makeDirectories("b");
  const auto a = watch(path("a"));
  const auto b = watch(path("b"));
  move("a/d", "b/d");
  ASSERT_TRUE(b->recorder.waitFor(path("b/d"), renamed | directory));
  ASSERT_TRUE(a->recorder.waitFor(path("a/d"), renamed | directory));
  makeFile("b/d/e/x.png");
  ASSERT_TRUE(b->recorder.waitFor(path("b/d/e/x.png"), modified | file));
  EXPECT_TRUE(eventually([] { return kernelWatchCount() == 4; }));
  EXPECT_EQ(1U, a->recorder.events().size());
}

TEST_F(InotifyDirectoryTest, TheFolderItselfMovedOrRemovedIsReportedOnce) {
  makeDirectories("moved");
  makeDirectories("removed/a");
  const auto first = watch(path("moved"));
  const auto second = watch(path("removed"));
  move("moved", "elsewhere");
  std::filesystem::remove_all(path("removed"));
  EXPECT_TRUE(first->recorder.waitFor(path("moved"), fileEventRootChanged));
  EXPECT_TRUE(second->recorder.waitFor(path("removed"), fileEventRootChanged));
  EXPECT_EQ(1U, first->recorder.events().size());
  EXPECT_EQ(1, std::ranges::count(second->recorder.events(),
                                  ReceivedEvent{path("removed"), fileEventRootChanged}));
}

TEST_F(InotifyDirectoryTest, AFolderThatIsMovedAwayAndBackGoesOnBeingWatched) {
  makeDirectories("a/b");
  const auto watched = watch(path("a"));
  move("a", "elsewhere");
  ASSERT_TRUE(watched->recorder.waitFor(path("a"), fileEventRootChanged));
  makeDirectories("elsewhere/b/new");
  move("elsewhere", "a");
  makeFile("a/last");
  ASSERT_TRUE(watched->recorder.waitFor(path("a/last"), modified | file));
  EXPECT_TRUE(eventually([] { return kernelWatchCount() == 3; })) << kernelWatchCount();
  expectEveryDirectoryWatched(*watched, path("a"));
}

TEST_F(InotifyDirectoryTest, AnUnreadableDirectoryMakesTheCoveragePartial) {
  const uid_t user = ::geteuid();
  if (user == 0) {
    ASSERT_EQ(0, ::seteuid(65534)) << "to root, everything is readable";
  }
  const TemporaryFolder own;
  std::filesystem::create_directories(own.path() + "/open");
  std::filesystem::create_directories(own.path() + "/closed");
  std::filesystem::permissions(own.path() + "/closed", std::filesystem::perms::none);
  Watched watched(service, makeQueue(), own.path());
  watched.stream->start();
  EXPECT_EQ(WatchCoverage::partial, waitForAnnouncement(own.path()));
  const auto errors = log.messages(LogLevel::error);
  ASSERT_EQ(1U, errors.size());
  EXPECT_NE(std::string::npos, errors[0].find(own.path() + "/closed"));
  std::ofstream(own.path() + "/open/x").put('x');
  EXPECT_TRUE(watched.recorder.waitFor(own.path() + "/open/x", modified | file));
  std::filesystem::permissions(own.path() + "/closed", std::filesystem::perms::owner_all);
  ASSERT_EQ(0, ::seteuid(user));
}

TEST_F(InotifyDirectoryTest, ARootFolderWithTrailingSlashesIsTheSameFolder) {
  makeDirectories("a");
  Watched watched(service, makeQueue(), path("a//"));
  watched.stream->start();
  EXPECT_EQ(WatchCoverage::complete, waitForAnnouncement(path("a")));
  makeFile("a/x");
  EXPECT_TRUE(watched.recorder.waitFor(path("a/x"), created | file));
}

}  // namespace
}  // namespace kestrivane::test

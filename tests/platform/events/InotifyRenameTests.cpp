#include <fcntl.h>

#include "platform/linux/StagingName.hpp"
#include "tests/platform/events/WatchFixture.hpp"

namespace kestrivane::test {
namespace {

class InotifyRenameTest : public WatchFixture {};

TEST_F(InotifyRenameTest, TenThousandRenamesInOneBurstAreAllReportedInPairs) {
  constexpr int count = 10000;
  for (int i = 0; i < count; ++i)
    makeFile(std::to_string(i) + ".png");
  const auto watched = watch(folder.path());
  for (int i = 0; i < count; ++i)
    move(std::to_string(i) + ".png", std::to_string(i) + ".jpg");

  std::size_t batchesSeen = 0;
  std::set<std::string> paired;
  ASSERT_TRUE(watched->recorder.waitUntil([&] {
    const auto batches = watched->recorder.batches();
    for (; batchesSeen < batches.size(); ++batchesSeen) {
      const auto& batch = batches[batchesSeen];
      for (std::size_t i = 0; i + 1 < batch.size(); i += 2) {
        EXPECT_EQ(renamed | file, batch[i].flags);
        EXPECT_EQ(std::filesystem::path(batch[i].path).replace_extension("jpg"), batch[i + 1].path);
        paired.insert(batch[i].path);
      }
    }
    return paired.size() == count;
  })) << paired.size();
}

TEST_F(InotifyRenameTest, RenamesBetweenTwoFoldersOfOneStreamArePaired) {
  makeDirectories("a/b");
  makeDirectories("c");
  makeFile("a/b/x.png");
  const auto watched = watch(folder.path());
  move("a/b/x.png", "c/x.jpg");
  EXPECT_TRUE(watched->recorder.waitForRename(path("a/b/x.png"), path("c/x.jpg")));
}

TEST_F(InotifyRenameTest, BetweenTwoStreamsEachSeesItsHalf) {
  makeDirectories("a");
  makeDirectories("b");
  makeFile("a/x.png");
  const auto a = watch(path("a"));
  const auto b = watch(path("b"));
  move("a/x.png", "b/x.jpg");
  ASSERT_TRUE(a->recorder.waitFor(path("a/x.png"), renamed | file));
  ASSERT_TRUE(b->recorder.waitFor(path("b/x.jpg"), renamed | file));
  EXPECT_EQ(1U, a->recorder.events().size());
  EXPECT_EQ(1U, b->recorder.events().size());
}

TEST_F(InotifyRenameTest, AFileMovedOutOrInIsReportedAlone) {
  makeDirectories("in");
  makeDirectories("out");
  makeFile("in/gone.png");
  makeFile("out/come.jpg");
  const auto watched = watch(path("in"));
  move("in/gone.png", "out/gone.png");
  ASSERT_TRUE(watched->recorder.waitFor(path("in/gone.png"), renamed | file));
  move("out/come.jpg", "in/come.jpg");
  ASSERT_TRUE(watched->recorder.waitFor(path("in/come.jpg"), renamed | file));
  EXPECT_EQ(2U, watched->recorder.events().size());
}

TEST_F(InotifyRenameTest, AnExchangeIsTwoPairs) {
  makeFile("a.png");
  makeFile("b.jpg");
  const auto watched = watch(folder.path());
  ASSERT_EQ(0, ::renameat2(AT_FDCWD, path("a.png").c_str(), AT_FDCWD, path("b.jpg").c_str(),
                           RENAME_EXCHANGE));
  EXPECT_TRUE(watched->recorder.waitForRename(path("a.png"), path("b.jpg")));
  EXPECT_TRUE(watched->recorder.waitForRename(path("b.jpg"), path("a.png")));
}

TEST_F(InotifyRenameTest, NamesAreBytes) {
  const std::vector<std::string> names{std::string(251, 'n'), "line\nfeed", "\xff\xfe\x80",
                                       "apostrophe's",        "a -> b",     " ",
                                       "\xd1\x84\xd0\xbe"};
  for (const std::string& name : names)
    makeFile(name + ".png");
  makeDirectories("\xff directory\n");
  makeFile("\xff directory\n/x.png");
  const auto watched = watch(folder.path());
  for (const std::string& name : names)
    move(name + ".png", name + ".jpg");
  move("\xff directory\n/x.png", "\xff directory\n/x.jpg");
  for (const std::string& name : names)
    EXPECT_TRUE(watched->recorder.waitForRename(path(name + ".png"), path(name + ".jpg"))) << name;
  EXPECT_TRUE(watched->recorder.waitForRename(path("\xff directory\n/x.png"),
                                              path("\xff directory\n/x.jpg")));
}

TEST_F(InotifyRenameTest, AStagingFileRenamedOverAnotherIsSeenAsAModificationOnly) {
  makeFile("a.jpg");
  const auto watched = watch(folder.path());
  const std::string staging = std::string(stagingPrefix) + "1";
  makeFile(staging);
  move(staging, "a.jpg");
  makeFile("last");
  ASSERT_TRUE(watched->recorder.waitFor(path("last"), modified | file));
  EXPECT_EQ((EventRecorder::Batch{{path("a.jpg"), modified | file},
                                  {path("last"), created | file},
                                  {path("last"), modified | file}}),
            watched->recorder.events());
}

TEST_F(InotifyRenameTest, AStagingFileFromOutsideIsSeenAsAModificationOnlyWhenSwappedIn) {
  makeFile("a.jpg");
  const std::string staging = std::string(stagingPrefix) + "1";
  makeFile(staging);
  const auto watched = watch(folder.path());
  ASSERT_EQ(0, ::renameat2(AT_FDCWD, path(staging).c_str(), AT_FDCWD, path("a.jpg").c_str(),
                           RENAME_EXCHANGE));
  std::filesystem::remove(path(staging));
  makeFile("last");
  ASSERT_TRUE(watched->recorder.waitFor(path("last"), modified | file));
  for (const ReceivedEvent& event : watched->recorder.events()) {
    if (event.path == path("last")) continue;
    EXPECT_EQ((ReceivedEvent{path("a.jpg"), modified | file}), event);
  }
}

TEST_F(InotifyRenameTest, MetadataAndContentChangesHaveTheirFlags) {
  makeFile("a.png");
  const auto watched = watch(folder.path());
  std::filesystem::permissions(path("a.png"), std::filesystem::perms::owner_all);
  ASSERT_TRUE(watched->recorder.waitFor(path("a.png"), fileEventItemInodeMetaMod | file));
  std::ofstream(path("a.png"), std::ios::app).put('y');
  ASSERT_TRUE(watched->recorder.waitFor(path("a.png"), modified | file));
  EXPECT_EQ(2U, watched->recorder.events().size());
}

}  // namespace
}  // namespace kestrivane::test

#include "tests/platform/events/Namespaces.hpp"
#include "tests/platform/events/WatchFixture.hpp"

namespace kestrivane::test {
namespace {

class InotifyLimitTest : public WatchFixture {
 protected:
  std::vector<std::string> errors() const { return log.messages(LogLevel::error); }
};

TEST_F(InotifyLimitTest, FiveHundredFoldersNeedOneInstance) {
  std::vector<std::unique_ptr<Watched>> all;
  for (int i = 0; i < 500; ++i) {
    makeDirectories(std::to_string(i) + "/sub");
    all.push_back(watch(path(std::to_string(i))));
  }
  std::size_t instances = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code ignored;
    instances += std::filesystem::read_symlink(entry, ignored) == "anon_inode:inotify";
  }
  EXPECT_EQ(1U, instances);
  makeFile("499/sub/x.png");
  EXPECT_TRUE(all[499]->recorder.waitFor(path("499/sub/x.png"), modified | file));
}

TEST_F(InotifyLimitTest, TenThousandDirectoriesMadeMovedAndRemovedLeaveNoWatch) {
  makeDirectories("in");
  makeDirectories("out");
  auto watched = watch(path("in"));
  for (int i = 0; i < 10000; ++i) {
    const std::string name = std::to_string(i);
    makeDirectories("in/" + name);
    if (i % 3 == 0) move("in/" + name, "in/moved" + name);
    if (i % 3 == 1) move("in/" + name, "out/" + name);
    if (i % 3 == 1 && i % 2 == 0) move("out/" + name, "in/back" + name);
  }
  std::filesystem::remove_all(path("in"));
  ASSERT_TRUE(watched->recorder.waitFor(path("in"), fileEventRootChanged));
  EXPECT_TRUE(eventually([] { return kernelWatchCount() == 0; })) << kernelWatchCount();
}

TEST_F(InotifyLimitTest, StoppingEveryStreamEndsEveryWatchAndSparesOtherStreams) {
  makeDirectories("small");
  for (int i = 0; i < 20000; ++i)
    std::filesystem::create_directory(path("small") + std::to_string(i));
  auto large = watch(folder.path());
  auto small = watch(path("small"));
  large.reset();
  EXPECT_TRUE(eventually([] { return kernelWatchCount() == 1; }));
  makeFile("small/x");
  EXPECT_TRUE(small->recorder.waitFor(path("small/x"), modified | file));
  // So many watches end without the kernel's queue running over.
  for (const ReceivedEvent& event : small->recorder.events())
    EXPECT_EQ(0U, event.flags & fileEventMustScanSubdirs);
  small.reset();
  EXPECT_TRUE(eventually([] { return kernelWatchCount() == 0; }));
}

TEST_F(InotifyLimitTest, StoppingDuringTheFirstWalkLeavesNoWatch) {
  for (int i = 0; i < 2000; ++i)
    makeDirectories(std::to_string(i % 40) + "/" + std::to_string(i));
  for (int i = 0; i < 20; ++i) {
    Watched watched(service, makeQueue(), folder.path());
    watched.stream->start();
    if (i % 2 == 1) continue;
    ASSERT_TRUE(eventually([] { return kernelWatchCount() > 100; }));
  }
  // A walk that follows all the others: they have ended when it has.
  watch(folder.path());
  EXPECT_TRUE(eventually([] { return kernelWatchCount() == 0; })) << kernelWatchCount();
}

// While an announcement is made no event is read: more events than the queue holds are lost then.
TEST_F(InotifyLimitTest, AnOverflowIsReportedToEveryStreamAndTheTreeIsWatchedAgain) {
  makeDirectories("a/old/deep");
  makeDirectories("a/moved");
  makeDirectories("b");
  makeDirectories("c");
  makeDirectories("out");
  const auto a = watch(path("a"));
  const auto b = watch(path("b"));
  setWhileAnnouncing([this] {
    std::size_t limit = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
    for (std::size_t i = 0; i < limit; ++i)
      std::filesystem::permissions(path(i % 2 == 0 ? "a/old" : "a/moved"),
                                   std::filesystem::perms::owner_all);
    makeDirectories("a/new/deep");
    std::filesystem::rename(path("a/moved"), path("a/new/moved"));
    std::filesystem::remove_all(path("a/old/deep"));
    std::filesystem::rename(path("a/old"), path("out/old"));
  });
  Watched c(service, makeQueue(), path("c"));
  c.stream->start();
  constexpr std::uint32_t lost = fileEventMustScanSubdirs | fileEventKernelDropped;
  EXPECT_TRUE(a->recorder.waitFor(path("a"), lost));
  EXPECT_TRUE(b->recorder.waitFor(path("b"), lost));
  EXPECT_TRUE(c.recorder.waitFor(path("c"), lost));
  // a, a/new, a/new/deep, a/new/moved, b, c
  EXPECT_TRUE(eventually([] { return kernelWatchCount() == 6; })) << kernelWatchCount();
  expectEveryDirectoryWatched(*a, path("a"));
}

TEST_F(InotifyLimitTest, AFolderThatDoesNotExistIsAnnouncedAsNotWatched) {
  Watched watched(service, makeQueue(), path("nowhere"));
  EXPECT_TRUE(watched.stream->start());
  EXPECT_EQ(WatchCoverage::none, waitForAnnouncement(path("nowhere")));
  ASSERT_EQ(1U, errors().size());
  EXPECT_NE(std::string::npos, errors()[0].find(path("nowhere")));
}

TEST_F(InotifyLimitTest, RelativePathsAreRefused) {
  const Watched watched(service, makeQueue(), "relative");
  EXPECT_EQ(nullptr, watched.stream);
}

/// Runs the body of `Test` in a process of its own, in which the user has a limit of `value`.
template <typename Test>
void runWithLimit(const std::string& limit, int value) {
  runInNamespaces<Test>(0, [&] {
    std::ofstream setting("/proc/sys/user/" + limit);
    setting << value << std::flush;
    return static_cast<bool>(setting);
  });
}

TEST(InotifyUserLimitTest, AtTheLimitOnWatchesWhatIsWatchedGoesOnAndTheSettingIsNamed) {
  class Limited : public WatchFixture {
   public:
    void TestBody() override {
      makeDirectories("a");
      for (int i = 0; i < 100; ++i)
        makeDirectories("a/" + std::to_string(i) + "/sub");
      makeFile("a/x.png");
      Watched watched(service, makeQueue(), path("a"));
      watched.stream->start();
      EXPECT_EQ(WatchCoverage::partial, waitForAnnouncement(path("a")));
      EXPECT_EQ(50U, kernelWatchCount());
      move("a/x.png", "a/x.jpg");
      EXPECT_TRUE(watched.recorder.waitForRename(path("a/x.png"), path("a/x.jpg")));
      makeDirectories("a/more");
      EXPECT_TRUE(watched.recorder.waitFor(path("a/more"), created | directory));
      const auto errors = log.messages(LogLevel::error);
      EXPECT_EQ(1U, errors.size()) << "once a stream";
      EXPECT_NE(std::string::npos, errors.at(0).find("fs.inotify.max_user_watches"));
    }
  };
  runWithLimit<Limited>("max_inotify_watches", 50);
}

TEST(InotifyUserLimitTest, WithoutAnInstanceNoStreamCanBeMadeAndTheReasonIsLogged) {
  class Limited : public WatchFixture {
   public:
    void TestBody() override {
      const Watched watched(service, makeQueue(), folder.path());
      EXPECT_EQ(nullptr, watched.stream);
      EXPECT_EQ(1U, log.messages(LogLevel::error).size());
    }
  };
  runWithLimit<Limited>("max_inotify_instances", 0);
}

}  // namespace
}  // namespace kestrivane::test

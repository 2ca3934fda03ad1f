#include "tests/platform/events/FileEventStreamConformance.hpp"
#include "tests/platform/events/WatchFixture.hpp"
#include "tests/support/InMemoryFileSystem.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {

std::unique_ptr<FileEventStreamConformance::Watched> FileEventStreamConformance::watch(
    const std::string& path) {
  auto watched = std::make_unique<Watched>();
  watched->stream = world->service().createStream({.paths = {path},
                                                   .sinceWhen = world->service().currentEventId(),
                                                   .latency = std::chrono::milliseconds(100),
                                                   .flags = streamFlags},
                                                  world->makeQueue(), watched->recorder.callback());
  EXPECT_TRUE(watched->stream->start());
  EXPECT_TRUE(world->waitUntilWatching(path));
  return watched;
}

void FileEventStreamConformance::expectUpToDate(Watched& watched, const std::string& folder) {
  world->writeFile(folder + "/last");
  ASSERT_TRUE(waitFor(watched, folder + "/last", created | file));
}

bool FileEventStreamConformance::waitFor(Watched& watched, const std::string& path,
                                         std::uint32_t flags) {
  return world->waitUntil(watched.recorder, [&] { return watched.recorder.has(path, flags); });
}

bool FileEventStreamConformance::waitForRename(Watched& watched, const std::string& from,
                                               const std::string& to) {
  return world->waitUntil(watched.recorder,
                          [&] { return watched.recorder.renames(from, to) == 1; });
}

namespace {

TEST_P(FileEventStreamConformance, ARenameIsTwoEventsNextToEachOtherOldNameFirst) {
  world->writeFile(root + "/a.png");
  const auto watched = watch(root);
  world->rename(root + "/a.png", root + "/a.jpg");
  ASSERT_TRUE(waitForRename(*watched, root + "/a.png", root + "/a.jpg"));
  EXPECT_EQ(
      (EventRecorder::Batch{{root + "/a.png", renamed | file}, {root + "/a.jpg", renamed | file}}),
      watched->recorder.events());
}

TEST_P(FileEventStreamConformance, ADirectoryIsMarkedAsOne) {
  const auto watched = watch(root);
  world->createDirectory(root + "/d");
  EXPECT_TRUE(waitFor(*watched, root + "/d", created | directory));
  world->rename(root + "/d", root + "/e");
  EXPECT_TRUE(waitFor(*watched, root + "/e", renamed | directory));
  world->remove(root + "/e");
  EXPECT_TRUE(waitFor(*watched, root + "/e", removed | directory));
}

TEST_P(FileEventStreamConformance, CreationModificationAndRemovalHaveTheirFlags) {
  const auto watched = watch(root);
  world->writeFile(root + "/a");
  EXPECT_TRUE(waitFor(*watched, root + "/a", created | file));
  world->writeFile(root + "/a");
  EXPECT_TRUE(waitFor(*watched, root + "/a", modified | file));
  world->remove(root + "/a");
  EXPECT_TRUE(waitFor(*watched, root + "/a", removed | file));
}

TEST_P(FileEventStreamConformance, AHalfWhosePartnerLiesOutsideStandsAlone) {
  world->createDirectory(root + "/in");
  world->writeFile(root + "/in/a.png");
  world->writeFile(root + "/b.jpg");
  const auto watched = watch(root + "/in");
  world->rename(root + "/in/a.png", root + "/a.png");
  EXPECT_TRUE(waitFor(*watched, root + "/in/a.png", renamed | file));
  world->rename(root + "/b.jpg", root + "/in/b.jpg");
  EXPECT_TRUE(waitFor(*watched, root + "/in/b.jpg", renamed | file));
  EXPECT_EQ(2U, watched->recorder.events().size());
}

TEST_P(FileEventStreamConformance, AFolderWhoseNameBeginsTheSameIsAnotherFolder) {
  world->createDirectory(root + "/a");
  world->createDirectory(root + "/ab");
  const auto watched = watch(root + "/a");
  world->writeFile(root + "/ab/x");
  expectUpToDate(*watched, root + "/a");
  for (const ReceivedEvent& event : watched->recorder.events())
    EXPECT_EQ(root + "/a/last", event.path);
}

TEST_P(FileEventStreamConformance, WhatHappensInANewDirectoryIsReported) {
  const auto watched = watch(root);
  world->createDirectory(root + "/d");
  ASSERT_TRUE(waitFor(*watched, root + "/d", created | directory));
  world->writeFile(root + "/d/a.png");
  world->rename(root + "/d/a.png", root + "/d/a.jpg");
  EXPECT_TRUE(waitForRename(*watched, root + "/d/a.png", root + "/d/a.jpg"));
}

TEST_P(FileEventStreamConformance, WhatHappensInARenamedDirectoryIsReportedUnderItsNewPath) {
  world->createDirectory(root + "/d");
  world->writeFile(root + "/d/a.png");
  const auto watched = watch(root);
  world->rename(root + "/d", root + "/e");
  world->rename(root + "/e/a.png", root + "/e/a.jpg");
  EXPECT_TRUE(waitForRename(*watched, root + "/e/a.png", root + "/e/a.jpg"));
}

TEST_P(FileEventStreamConformance, EveryStreamIsTold) {
  world->createDirectory(root + "/d");
  const auto outer = watch(root);
  const auto inner = watch(root + "/d");
  world->writeFile(root + "/d/a");
  EXPECT_TRUE(waitFor(*outer, root + "/d/a", created | file));
  EXPECT_TRUE(waitFor(*inner, root + "/d/a", created | file));
}

TEST_P(FileEventStreamConformance, WhatHappenedBeforeTheStartIsNotReported) {
  world->writeFile(root + "/before");
  const auto watched = watch(root);
  expectUpToDate(*watched, root);
  EXPECT_FALSE(watched->recorder.has(root + "/before", created | file));
}

TEST_P(FileEventStreamConformance, NothingIsDeliveredAfterStop) {
  const auto stopped = watch(root);
  const auto other = watch(root);
  stopped->stream->stop();
  expectUpToDate(*other, root);
  EXPECT_TRUE(stopped->recorder.events().empty());
}

TEST_P(FileEventStreamConformance, StoppingTwiceOrWithoutAStartDoesNothing) {
  EventRecorder recorder;
  const auto neverStarted = world->service().createStream({.paths = {root}, .flags = streamFlags},
                                                          world->makeQueue(), recorder.callback());
  neverStarted->stop();
  const auto watched = watch(root);
  watched->stream->stop();
  watched->stream->stop();
  const auto other = watch(root);
  expectUpToDate(*other, root);
  EXPECT_TRUE(watched->recorder.events().empty());
  EXPECT_TRUE(recorder.events().empty());
}

TEST_P(FileEventStreamConformance, AStreamMayBeStoppedFromItsOwnCallback) {
  EventRecorder recorder;
  std::unique_ptr<FileEventStream> stream;
  stream = world->service().createStream(
      {.paths = {root}, .latency = std::chrono::milliseconds(100), .flags = streamFlags},
      world->makeQueue(), [&stream, record = recorder.callback()](auto paths, auto flags) {
        record(paths, flags);
        stream->stop();
      });
  ASSERT_TRUE(stream->start());
  ASSERT_TRUE(world->waitUntilWatching(root));
  world->createDirectory(root + "/first");
  ASSERT_TRUE(world->waitUntil(recorder,
                               [&] { return recorder.has(root + "/first", created | directory); }));
  const auto other = watch(root);
  expectUpToDate(*other, root);
  EXPECT_EQ(1U, recorder.batches().size());
  stream->stop();
}

class InMemoryWorld final : public FileEventWorld {
 public:
  InMemoryWorld() { fileSystem_.createDirectory("/w"); }
  std::string root() const override { return "/w"; }
  FileEventService& service() override { return fileSystem_; }
  std::shared_ptr<Executor> makeQueue() override {
    return std::shared_ptr<Executor>(std::shared_ptr<void>(), &loop_);
  }
  void createDirectory(const std::string& path) override { fileSystem_.createDirectory(path); }
  void writeFile(const std::string& path) override { fileSystem_.writeFile(path, "x"); }
  void rename(const std::string& from, const std::string& to) override {
    fileSystem_.rename(from, to);
  }
  void remove(const std::string& path) override { fileSystem_.remove(path); }
  bool waitUntilWatching(const std::string&) override { return true; }
  bool waitUntil(EventRecorder&, const std::function<bool()>& condition) override {
    loop_.runUntilIdle();
    return condition();
  }

 private:
  VirtualLoop loop_;
  InMemoryFileSystem fileSystem_;
};

class KernelWorld final : public FileEventWorld {
 public:
  ~KernelWorld() override { pool_->finish(); }
  std::string root() const override { return folder_.path(); }
  FileEventService& service() override { return service_; }
  std::shared_ptr<Executor> makeQueue() override {
    return std::make_shared<SerialQueue>(pool_, "test.events");
  }
  void createDirectory(const std::string& path) override {
    std::filesystem::create_directory(path);
  }
  void writeFile(const std::string& path) override { std::ofstream(path).put('x'); }
  void rename(const std::string& from, const std::string& to) override {
    std::filesystem::rename(from, to);
  }
  void remove(const std::string& path) override { std::filesystem::remove(path); }
  bool waitUntilWatching(const std::string& path) override {
    std::unique_lock lock(mutex_);
    const bool came =
        changed_.wait_for(lock, std::chrono::seconds(60), [&] { return watching_.contains(path); });
    if (came) watching_.erase(watching_.find(path));
    return came;
  }
  bool waitUntil(EventRecorder& recorder, const std::function<bool()>& condition) override {
    return recorder.waitUntil(condition);
  }

 private:
  TemporaryFolder folder_;
  std::shared_ptr<ThreadPool> pool_ = ThreadPool::create("test", 2);
  FakeLog log_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::multiset<std::string> watching_;
  InotifyFileEventService service_{log_, [this](const std::string& path, WatchCoverage) {
                                     const std::lock_guard lock(mutex_);
                                     watching_.insert(path);
                                     changed_.notify_all();
                                   }};
};

template <typename World>
std::unique_ptr<FileEventWorld> make() {
  return std::make_unique<World>();
}

std::string noNumber(const testing::TestParamInfo<MakeFileEventWorld>&) {
  return "Service";
}

INSTANTIATE_TEST_SUITE_P(InMemory, FileEventStreamConformance,
                         testing::Values(&make<InMemoryWorld>), noNumber);
INSTANTIATE_TEST_SUITE_P(Kernel, FileEventStreamConformance, testing::Values(&make<KernelWorld>),
                         noNumber);

}  // namespace
}  // namespace kestrivane::test

// The executors of macOS, over a libdispatch made of threads.

#include <algorithm>
#include <atomic>
#include <functional>
#include <latch>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/macos/MacDispatch.hpp"
#include "tests/macos/dispatch/ThreadedDispatch.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {
namespace {

constexpr auto userInitiated = QualityOfService::userInitiated;

class MacDispatchTest : public testing::Test {
 protected:
  ~MacDispatchTest() override {
    dispatch.reset();
    EXPECT_EQ(endDispatch(), 0) << "queues or groups that were not released";
  }

  /// Runs the job on the queue and waits for it.
  static void runOn(Executor& queue, const std::function<void()>& job) {
    std::latch done(1);
    queue.post([&] {
      job();
      done.count_down();
    });
    done.wait();
  }

  VirtualLoop loop;
  std::unique_ptr<MacDispatch> dispatch = std::make_unique<MacDispatch>(loop);
};

TEST_F(MacDispatchTest, HandsOutTheMainLoopItWasGiven) {
  EXPECT_EQ(&dispatch->mainLoop(), &loop);
}

TEST_F(MacDispatchTest, AsksForQueuesOfTheirLabelsAndQualities) {
  dispatch->makeSerialQueue("com.kestrivane.FolderMonitorQueue", QualityOfService::background);
  dispatch->longWorkQueue().post([] {});
  EXPECT_EQ(queues(),
            (std::vector<std::string>{"global 9", "global 25",
                                      "com.kestrivane.FolderMonitorQueue 9", "long work 25"}));
}

TEST_F(MacDispatchTest, RunsTwoHeavyJobsAtOnce) {
  std::latch bothRun(2);
  std::atomic<int> runs = 0;
  for (int i = 0; i < 2; ++i) {
    dispatch->globalQueue(userInitiated).post([&] {
      bothRun.arrive_and_wait();
      runs.fetch_add(1);
    });
  }
  dispatch.reset();
  EXPECT_EQ(runs, 2);
}

TEST_F(MacDispatchTest, RunsTheJobsOfASerialQueueOneAtATimeAndInOrder) {
  const auto queue = dispatch->makeSerialQueue("serial", userInitiated);
  std::vector<int> order;
  std::atomic<int> running = 0;
  for (int i = 0; i < 1000; ++i) {
    queue->post([&, i] {
      EXPECT_EQ(running.fetch_add(1), 0);
      order.push_back(i);
      running.fetch_sub(1);
    });
  }
  runOn(*queue, [] {});
  ASSERT_EQ(order.size(), 1000U);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_F(MacDispatchTest, StartsEveryLongJobAtOnce) {
  constexpr int count = 40;
  std::latch allRun(count);
  std::atomic<int> runs = 0;
  for (int i = 0; i < count; ++i) {
    dispatch->longWorkQueue().post([&] {
      allRun.arrive_and_wait();
      runs.fetch_add(1);
    });
  }
  dispatch.reset();
  EXPECT_EQ(runs, count);
}

TEST_F(MacDispatchTest, RunsWhatIsQueuedBeforeItGoesAndWhatThatPosts) {
  std::atomic<int> runs = 0;
  const auto queue = dispatch->makeSerialQueue("serial", userInitiated);
  for (int i = 0; i < 100; ++i) {
    dispatch->longWorkQueue().post([&] {
      runs.fetch_add(1);
      queue->post([&] { runs.fetch_add(1); });
    });
  }
  dispatch.reset();
  EXPECT_EQ(runs, 200);
}

TEST_F(MacDispatchTest, DropsWhatIsPostedToAQueueAfterItHasGone) {
  const auto token = std::make_shared<int>(1);
  const auto queue = dispatch->makeSerialQueue("serial", userInitiated);
  dispatch.reset();
  queue->post([token] { FAIL() << "nobody waits for it"; });
  EXPECT_EQ(token.use_count(), 1);
}

TEST_F(MacDispatchTest, DropsTheJobsOfAQueueThatHasGone) {
  const auto token = std::make_shared<int>(1);
  auto queue = dispatch->makeSerialQueue("serial", userInitiated);
  std::latch isBusy(1);
  std::latch release(1);
  queue->post([&] {
    isBusy.count_down();
    release.wait();
  });
  queue->post([token] { FAIL() << "its queue has gone"; });
  isBusy.wait();
  queue.reset();
  release.count_down();
  dispatch.reset();
  EXPECT_EQ(token.use_count(), 1);
}

TEST_F(MacDispatchTest, ReleasesAQueueThatIsHeldByItsOwnJobOnly) {
  const auto token = std::make_shared<int>(1);
  auto queue = dispatch->makeSerialQueue("serial", userInitiated);
  queue->post([token, queue] {});
  queue.reset();
  dispatch.reset();
  EXPECT_EQ(token.use_count(), 1);
}

}  // namespace
}  // namespace kestrivane::test

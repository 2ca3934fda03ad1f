#include <atomic>
#include <latch>
#include <list>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "async/LimitedQueue.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {
namespace {

/// Starts jobs only when a test says so, each as on a thread of its own.
class Threads final : public Executor {
 public:
  void post(Job job) override {
    if (areExhausted) throw std::runtime_error("no thread left");
    jobs.push_back(std::move(job));
  }

  bool areExhausted = false;
  std::vector<Job> jobs;
};

TEST(LimitedQueue, RunsNoJobInsideThePost) {
  VirtualLoop loop;
  LimitedQueue queue(loop, 1);
  bool hasRun = false;
  queue.post([&] { hasRun = true; });
  EXPECT_FALSE(hasRun);
  loop.runUntilIdle();
  EXPECT_TRUE(hasRun);
}

TEST(LimitedQueue, TakesNoMoreThreadsThanItsLimit) {
  Threads threads;
  LimitedQueue queue(threads, 2);
  for (int i = 0; i < 5; ++i)
    queue.post([] {});
  EXPECT_EQ(threads.jobs.size(), 2U);
}

TEST(LimitedQueue, RunsWhatWaitsInTheOrderInWhichItCame) {
  Threads threads;
  LimitedQueue queue(threads, 1);
  std::vector<int> order;
  for (int i = 0; i < 4; ++i)
    queue.post([&order, i] { order.push_back(i); });
  ASSERT_EQ(threads.jobs.size(), 1U);
  threads.jobs.at(0)();
  EXPECT_EQ(order, (std::vector{0, 1, 2, 3}));
}

TEST(LimitedQueue, HasItsTurnsAgainAfterwards) {
  VirtualLoop loop;
  LimitedQueue queue(loop, 2);
  int count = 0;
  for (int i = 0; i < 10; ++i) {
    for (int j = 0; j < 5; ++j)
      queue.post([&count] { ++count; });
    loop.runUntilIdle();
  }
  EXPECT_EQ(count, 50);
}

TEST(LimitedQueue, RunsWhatAJobPosts) {
  VirtualLoop loop;
  LimitedQueue queue(loop, 1);
  bool hasRun = false;
  queue.post([&] { queue.post([&] { hasRun = true; }); });
  loop.runUntilIdle();
  EXPECT_TRUE(hasRun);
}

TEST(LimitedQueue, ReleasesWhatAJobOwnsBeforeTheNextOneRuns) {
  VirtualLoop loop;
  LimitedQueue queue(loop, 1);
  auto owned = std::make_shared<int>(1);
  const std::weak_ptr<int> watched = owned;
  queue.post([held = std::move(owned)] { EXPECT_EQ(*held, 1); });
  bool wasReleased = false;
  queue.post([&] { wasReleased = watched.expired(); });
  loop.runUntilIdle();
  EXPECT_TRUE(wasReleased);
}

TEST(LimitedQueue, LosesNoTurnWhenThereIsNoThread) {
  Threads threads;
  LimitedQueue queue(threads, 1);
  threads.areExhausted = true;
  EXPECT_THROW(queue.post([] {}), std::runtime_error);
  threads.areExhausted = false;
  queue.post([] {});
  EXPECT_EQ(threads.jobs.size(), 1U);
}

/// Runs each job at once, on a thread of its own.
class RealThreads final : public Executor {
 public:
  void post(Job job) override {
    const std::lock_guard lock(mutex_);
    threads_.emplace_back(std::move(job));
  }

 private:
  std::mutex mutex_;
  std::list<std::jthread> threads_;
};

TEST(LimitedQueue, NeverRunsMoreAtOnceThanItsLimit) {
  constexpr int limit = 3;
  constexpr int jobs = 200;
  std::atomic running = 0;
  std::atomic most = 0;
  std::latch ended(jobs);
  RealThreads threads;
  LimitedQueue queue(threads, limit);
  for (int i = 0; i < jobs; ++i) {
    queue.post([&] {
      const int now = ++running;
      for (int former = most; now > former && !most.compare_exchange_weak(former, now);) {
      }
      std::this_thread::yield();
      --running;
      ended.count_down();
    });
  }
  ended.wait();
  EXPECT_GE(most, 1);
  EXPECT_LE(most, limit);
}

TEST(LimitedQueue, FinishesItsJobsAfterItsEnd) {
  VirtualLoop loop;
  int count = 0;
  {
    LimitedQueue queue(loop, 1);
    for (int i = 0; i < 3; ++i)
      queue.post([&count] { ++count; });
  }
  loop.runUntilIdle();
  EXPECT_EQ(count, 3);
}

}  // namespace
}  // namespace kestrivane::test

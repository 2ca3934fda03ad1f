// The threads of the program.

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <iterator>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include "platform/linux/system/LinuxDispatch.hpp"
#include "platform/linux/system/RunLoop.hpp"

namespace kestrivane::test {
namespace {

using namespace std::chrono_literals;

constexpr auto userInitiated = QualityOfService::userInitiated;

class DispatchTest : public testing::Test {
 protected:
  RunLoop loop;
  std::unique_ptr<LinuxDispatch> dispatch = LinuxDispatch::create(loop);

  /// Runs the job on the queue and waits for it.
  static void runOn(Executor& queue, const std::function<void()>& job) {
    std::latch done(1);
    queue.post([&] {
      job();
      done.count_down();
    });
    done.wait();
  }
};

std::size_t threadCount() {
  const std::filesystem::directory_iterator threads("/proc/self/task");
  return static_cast<std::size_t>(std::distance(begin(threads), end(threads)));
}

std::string nameOfThisThread() {
  std::array<char, 16> name{};
  pthread_getname_np(pthread_self(), name.data(), name.size());
  return name.data();
}

TEST_F(DispatchTest, HandsOutTheMainLoopItWasGiven) {
  EXPECT_EQ(&dispatch->mainLoop(), &loop);
}

TEST_F(DispatchTest, RunsTwoHeavyJobsAtOnce) {
  std::array<std::promise<void>, 2> begun;
  std::atomic<int> met = 0;
  std::latch bothDone(2);
  for (std::size_t i = 0; i < 2; ++i) {
    dispatch->globalQueue(userInitiated).post([&, i] {
      begun[i].set_value();
      if (begun[1 - i].get_future().wait_for(20s) == std::future_status::ready) ++met;
      bothDone.count_down();
    });
  }
  bothDone.wait();
  EXPECT_EQ(met, 2);
}

TEST_F(DispatchTest, RunsTheJobsOfASerialQueueOneAtATimeAndInOrder) {
  const auto queue = dispatch->makeSerialQueue("serial", userInitiated);
  std::vector<int> order;
  std::atomic<int> running = 0;
  std::latch done(1);
  for (int i = 0; i < 1000; ++i) {
    queue->post([&, i] {
      EXPECT_EQ(running.fetch_add(1), 0);
      order.push_back(i);
      running.fetch_sub(1);
    });
  }
  queue->post([&] { done.count_down(); });
  done.wait();
  ASSERT_EQ(order.size(), 1000U);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_F(DispatchTest, KeepsTheOrderOfEachThreadThatPosts) {
  const auto queue = dispatch->makeSerialQueue("serial", userInitiated);
  std::array<int, 4> counts{};
  std::latch done(4 * 500);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    threads.emplace_back([&, i] {
      for (int n = 0; n < 500; ++n) {
        queue->post([&, i, n] {
          EXPECT_EQ(counts[i]++, n);
          done.count_down();
        });
      }
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  done.wait();
}

TEST_F(DispatchTest, RunsSerialQueuesWhileEveryWorkerIsBusy) {
  std::latch release(1);
  for (unsigned i = 0; i < std::max(2U, std::thread::hardware_concurrency()); ++i)
    dispatch->globalQueue(userInitiated).post([&] { release.wait(); });
  const auto queue = dispatch->makeSerialQueue("serial", QualityOfService::background);
  bool hasRun = false;
  runOn(*queue, [&] { hasRun = true; });
  release.count_down();
  dispatch.reset();  // the workers are done with the latch
  EXPECT_TRUE(hasRun);
}

TEST_F(DispatchTest, RunsOneSerialQueueWhileAnotherIsBusy) {
  const auto busy = dispatch->makeSerialQueue("busy", userInitiated);
  const auto other = dispatch->makeSerialQueue("other", userInitiated);
  std::latch release(1);
  busy->post([&] { release.wait(); });
  bool hasRun = false;
  runOn(*other, [&] { hasRun = true; });
  release.count_down();
  dispatch.reset();  // the busy queue is done with the latch
  EXPECT_TRUE(hasRun);
}

TEST_F(DispatchTest, StartsEveryLongJobAtOnce) {
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

TEST_F(DispatchTest, RunsHeavyJobsWhileLongOnesGoOn) {
  std::latch release(1);
  for (int i = 0; i < 20; ++i)
    dispatch->longWorkQueue().post([&] { release.wait(); });
  bool hasRun = false;
  runOn(dispatch->globalQueue(userInitiated), [&] { hasRun = true; });
  release.count_down();
  dispatch.reset();  // the long jobs are done with the latch
  EXPECT_TRUE(hasRun);
}

TEST_F(DispatchTest, KeepsNoThreadOfALongJobThatHasEnded) {
  const std::size_t before = threadCount();
  for (int i = 0; i < 100; ++i)
    runOn(dispatch->longWorkQueue(), [] {});
  // The kernel needs a moment to end a thread after its job has ended.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (threadCount() > before && std::chrono::steady_clock::now() < deadline)
    std::this_thread::yield();
  EXPECT_EQ(threadCount(), before);
}

TEST_F(DispatchTest, RunsLongJobsThatLongJobsPostBeforeItGoes) {
  std::atomic<int> runs = 0;
  dispatch->longWorkQueue().post([&, &queues = *dispatch] {
    queues.longWorkQueue().post([&] { runs.fetch_add(1); });
    queues.globalQueue(userInitiated).post([&] { runs.fetch_add(1); });
  });
  dispatch.reset();
  EXPECT_EQ(runs, 2);
}

TEST_F(DispatchTest, HasNoThreadOfItsOwnForASerialQueue) {
  const std::size_t before = threadCount();
  std::vector<std::shared_ptr<Executor>> queues;
  std::atomic<int> runs = 0;
  std::latch done(500);
  for (int i = 0; i < 500; ++i) {
    queues.push_back(dispatch->makeSerialQueue("serial", userInitiated));
    queues.back()->post([&] {
      runs.fetch_add(1);
      done.count_down();
    });
  }
  done.wait();
  EXPECT_EQ(runs, 500);
  EXPECT_EQ(threadCount(), before);
}

TEST_F(DispatchTest, NamesItsThreads) {
  std::string name;
  runOn(dispatch->globalQueue(userInitiated), [&] { name = nameOfThisThread(); });
  EXPECT_EQ(name, "worker");
  runOn(dispatch->longWorkQueue(), [&] { name = nameOfThisThread(); });
  EXPECT_EQ(name, "long work");
  const auto queue = dispatch->makeSerialQueue("com.kestrivane.monitor", userInitiated);
  runOn(*queue, [&] { name = nameOfThisThread(); });
  EXPECT_EQ(name, "trivane.monitor");
}

TEST_F(DispatchTest, LeavesSignalsThatEndTheProgramToTheMainThread) {
  sigset_t mask;
  const auto readMask = [&] { pthread_sigmask(SIG_SETMASK, nullptr, &mask); };
  const auto queue = dispatch->makeSerialQueue("serial", userInitiated);
  for (Executor* const executor :
       {&dispatch->globalQueue(userInitiated), &dispatch->longWorkQueue(), queue.get()}) {
    runOn(*executor, readMask);
    EXPECT_EQ(sigismember(&mask, SIGINT), 1);
    EXPECT_EQ(sigismember(&mask, SIGTERM), 1);
  }
  readMask();
  EXPECT_EQ(sigismember(&mask, SIGTERM), 0) << "the mask of this thread stays as it was";
}

TEST_F(DispatchTest, RunsWhatIsQueuedBeforeItGoes) {
  std::atomic<int> runs = 0;
  const auto queue = dispatch->makeSerialQueue("serial", userInitiated);
  for (int i = 0; i < 200; ++i) {
    dispatch->globalQueue(userInitiated).post([&] {
      runs.fetch_add(1);
      queue->post([&] { runs.fetch_add(1); });
    });
  }
  dispatch.reset();
  EXPECT_EQ(runs, 400);
}

TEST_F(DispatchTest, DropsWhatIsPostedToAQueueAfterItHasGone) {
  const auto queue = dispatch->makeSerialQueue("serial", userInitiated);
  dispatch.reset();
  queue->post([] { FAIL() << "there is no thread to run on"; });
}

TEST_F(DispatchTest, ReleasesAQueueThatIsHeldByItsOwnJobOnly) {
  auto token = std::make_shared<int>(1);
  auto queue = dispatch->makeSerialQueue("serial", userInitiated);
  queue->post([token, queue] {});
  queue.reset();
  dispatch.reset();
  EXPECT_EQ(token.use_count(), 1);
}

}  // namespace
}  // namespace kestrivane::test

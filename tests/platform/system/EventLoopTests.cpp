// The main loop of a program without a desktop, and the one that unit tests drive.

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/system/RunLoop.hpp"
#include "tests/platform/system/EventLoopConformance.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {
namespace {

class RunLoopSubject final : public Subject {
 public:
  EventLoop& loop() override { return loop_; }
  void run() override { loop_.run(); }
  void stop() override { loop_.stop(); }

 private:
  RunLoop loop_;
};

class VirtualLoopSubject final : public Subject {
 public:
  EventLoop& loop() override { return loop_; }
  void run() override {
    while (!std::exchange(stopped_, false))
      loop_.advance(1ms);
  }
  void stop() override { stopped_ = true; }

 private:
  VirtualLoop loop_;
  bool stopped_ = false;
};

INSTANTIATE_TEST_SUITE_P(RunLoop, EventLoopConformance,
                         testing::Values([] { return std::make_unique<RunLoopSubject>(); }));
INSTANTIATE_TEST_SUITE_P(VirtualLoop, EventLoopConformance,
                         testing::Values([] { return std::make_unique<VirtualLoopSubject>(); }));

TEST(RunLoop, TakesJobsFromAllThreadsAndRunsThemOnItsOwn) {
  RunLoop loop;
  std::vector<std::thread> threads;
  const std::thread::id own = std::this_thread::get_id();
  std::vector<int> counts(4, 0);
  int left = 4 * 1000;
  for (std::size_t i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      for (int n = 0; n < 1000; ++n) {
        loop.post([&, i, n] {
          EXPECT_EQ(std::this_thread::get_id(), own);
          EXPECT_EQ(counts[i]++, n);  // in the order of the thread that posted
          if (--left == 0) loop.stop();
        });
      }
    });
  }
  loop.run();
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(left, 0);
}

TEST(RunLoop, WakesUpForAnEarlierTimerAndForStopFromAnotherThread) {
  RunLoop loop;
  bool hasRun = false;
  loop.postAfter(1h, [] { FAIL() << "an hour has passed"; });
  std::thread other([&] {
    loop.postAfter(1ms, [&] {
      hasRun = true;
      std::thread([&] { loop.stop(); }).join();
    });
  });
  loop.run();
  other.join();
  EXPECT_TRUE(hasRun);
}

TEST(RunLoop, ReleasesACancelledTimersCapturesWhichMayUseTheLoop) {
  RunLoop loop;
  bool hasRun = false;
  auto captured = std::shared_ptr<void>(nullptr, [&](void*) { loop.post([&] { hasRun = true; }); });
  const EventLoop::TimerId timer = loop.postAfter(1ms, [captured] {});
  captured.reset();
  loop.cancelTimer(timer);
  loop.postAfter(1ms, [&] { loop.stop(); });
  loop.run();
  EXPECT_TRUE(hasRun);
}

TEST(RunLoop, RunsOnWhereItWasStopped) {
  RunLoop loop;
  std::string trace;
  loop.post([&] {
    trace += 'a';
    loop.stop();
  });
  loop.post([&] {
    trace += 'b';
    loop.stop();
  });
  loop.run();
  EXPECT_EQ(trace, "a");
  loop.run();
  EXPECT_EQ(trace, "ab");
}

TEST(RunLoop, EndsAtOnceWhenItWasStoppedBefore) {
  RunLoop loop;
  loop.post([] { FAIL() << "it was stopped"; });
  loop.stop();
  loop.run();
}

TEST(RunLoop, TakesTheLongestDelayThereIs) {
  RunLoop loop;
  loop.postAfter(std::chrono::nanoseconds::max(), [] { FAIL() << "centuries have passed"; });
  loop.postAfter(std::chrono::nanoseconds::min(), [&] { loop.stop(); });
  loop.run();
}

}  // namespace
}  // namespace kestrivane::test

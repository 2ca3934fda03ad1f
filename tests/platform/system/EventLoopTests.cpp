// What every event loop does: the main loop of the program and the one that unit tests drive.

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/system/RunLoop.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {
namespace {

using namespace std::chrono_literals;

/// A loop, and the way to let it run until a job of the test says that it is enough.
class Subject {
 public:
  Subject() = default;
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;
  virtual ~Subject() = default;
  virtual EventLoop& loop() = 0;
  virtual void run() = 0;
  virtual void stop() = 0;
};

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

using Factory = std::function<std::unique_ptr<Subject>()>;

class EventLoopConformance : public testing::TestWithParam<Factory> {
 protected:
  std::unique_ptr<Subject> subject = GetParam()();
  EventLoop& loop = subject->loop();
  std::string trace;

  Executor::Job mark(char letter) {
    return [this, letter] { trace += letter; };
  }
  void runUntilStopped() { subject->run(); }
  Executor::Job stop() {
    return [this] { subject->stop(); };
  }
};

TEST_P(EventLoopConformance, RunsJobsInTheOrderInWhichTheyWerePosted) {
  for (const char letter : std::string("abcdef"))
    loop.post(mark(letter));
  loop.post(stop());
  runUntilStopped();
  EXPECT_EQ(trace, "abcdef");
}

TEST_P(EventLoopConformance, NeverRunsAJobInsideOfPost) {
  loop.post([this] {
    loop.post(mark('b'));
    trace += 'a';
    loop.post(stop());
  });
  EXPECT_EQ(trace, "");
  runUntilStopped();
  EXPECT_EQ(trace, "ab");
}

TEST_P(EventLoopConformance, RunsTimersByTheirDueTime) {
  loop.postAfter(30ms, mark('c'));
  loop.postAfter(10ms, mark('a'));
  loop.postAfter(20ms, mark('b'));
  loop.postAfter(40ms, stop());
  runUntilStopped();
  EXPECT_EQ(trace, "abc");
}

TEST_P(EventLoopConformance, RunsTimersOfOneDelayInTheOrderInWhichTheyWereMade) {
  for (const char letter : std::string("abcdef"))
    loop.postAfter(5ms, mark(letter));
  loop.postAfter(5ms, stop());
  runUntilStopped();
  EXPECT_EQ(trace, "abcdef");
}

TEST_P(EventLoopConformance, DropsACancelledTimer) {
  const EventLoop::TimerId first = loop.postAfter(1ms, mark('a'));
  loop.postAfter(2ms, mark('b'));
  EXPECT_NE(first, 0U);
  loop.cancelTimer(first);
  loop.postAfter(3ms, stop());
  runUntilStopped();
  EXPECT_EQ(trace, "b");
}

TEST_P(EventLoopConformance, DropsATimerThatIsDueButHasNotRun) {
  EventLoop::TimerId second = 0;
  loop.postAfter(1ms, [&] {
    trace += 'a';
    loop.cancelTimer(second);
  });
  second = loop.postAfter(1ms, mark('b'));
  loop.postAfter(1ms, stop());
  runUntilStopped();
  EXPECT_EQ(trace, "a");
}

TEST_P(EventLoopConformance, IgnoresTimersThatAreNotThere) {
  loop.cancelTimer(0);
  loop.cancelTimer(99);
  const EventLoop::TimerId timer = loop.postAfter(0ms, mark('a'));
  loop.postAfter(1ms, [this, timer] {
    loop.cancelTimer(timer);  // it has run
    subject->stop();
  });
  runUntilStopped();
  EXPECT_EQ(trace, "a");
}

TEST_P(EventLoopConformance, DropsWhatIsLeftWithoutRunningIt) {
  const auto token = std::make_shared<int>(1);
  loop.post([token, this] { trace += 'a'; });
  loop.postAfter(1ms, [token, this] { trace += 'b'; });
  subject.reset();
  EXPECT_EQ(token.use_count(), 1);
  EXPECT_EQ(trace, "");
}

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

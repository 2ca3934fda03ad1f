// What every event loop does, as tests over a way to make one: the main loops of the programs and
// the one that unit tests drive. Included by one source of a test program, which instantiates them.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "async/EventLoop.hpp"

namespace kestrivane::test {

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

}  // namespace kestrivane::test

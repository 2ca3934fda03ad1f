#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "async/RunOn.hpp"
#include "async/Sleep.hpp"
#include "async/Task.hpp"
#include "async/TaskGroup.hpp"
#include "async/TaskScope.hpp"
#include "tests/support/RunTask.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {
namespace {

using namespace std::chrono_literals;

Task<int> answer() {
  co_return 42;
}

Task<int> failing() {
  throw std::runtime_error("it broke");
  co_return 0;
}

TEST(Task, GivesItsValueToTheOneWhoAwaitsIt) {
  VirtualLoop loop;
  EXPECT_EQ(runTask(loop, answer()), 42);
}

TEST(Task, RethrowsInTheOneWhoAwaitsIt) {
  VirtualLoop loop;
  EXPECT_THROW(runTask(loop, failing()), std::runtime_error);
}

Task<void> setWhenRun(bool* ran) {
  *ran = true;
  co_return;
}

TEST(Task, DoesNotRunBeforeItIsAwaited) {
  bool ran = false;
  { const Task<void> task = setWhenRun(&ran); }
  EXPECT_FALSE(ran);
}

Task<long> sumOfFinishedTasks(int count) {
  long sum = 0;
  for (int i = 0; i < count; ++i)
    sum += co_await answer();
  co_return sum;
}

TEST(Task, AwaitsAHundredThousandFinishedTasksInALoopWithAFlatStack) {
  VirtualLoop loop;
  EXPECT_EQ(runTask(loop, sumOfFinishedTasks(100'000)), 4'200'000);
}

Task<int> depthBelow(int levels) {
  if (levels == 0) co_return 0;
  co_return 1 + co_await depthBelow(levels - 1);
}

TEST(Task, AwaitsAHundredThousandNestedTasksWithAFlatStack) {
  VirtualLoop loop;
  EXPECT_EQ(runTask(loop, depthBelow(100'000)), 100'000);
}

Task<void> sleepThenAppend(std::chrono::nanoseconds delay, std::string name,
                           std::vector<std::string>* log) {
  co_await sleepFor(delay);
  log->push_back(std::move(name));
}

TEST(Sleep, EndsWhenTheDelayHasPassedAndNotBefore) {
  VirtualLoop loop;
  TaskScope scope(loop);
  std::vector<std::string> log;
  scope.spawn(sleepThenAppend(500ms, "awake", &log));
  loop.advance(499ms);
  EXPECT_TRUE(log.empty());
  loop.advance(1ms);
  EXPECT_EQ(log, std::vector<std::string>{"awake"});
}

TEST(Sleep, EndsAtOnceWhenItsTaskIsCancelled) {
  VirtualLoop loop;
  TaskScope scope(loop);
  std::vector<std::string> log;
  TaskHandle task = scope.spawn(sleepThenAppend(1h, "awake", &log));
  loop.runUntilIdle();
  EXPECT_TRUE(log.empty());
  task.cancel();
  loop.runUntilIdle();
  EXPECT_EQ(log.size(), 1U);
  EXPECT_EQ(loop.timerCount(), 0U);
}

TEST(Sleep, DoesNotStartInACancelledTask) {
  VirtualLoop loop;
  TaskScope scope(loop);
  std::vector<std::string> log;
  scope.spawn(sleepThenAppend(1h, "awake", &log)).cancel();
  loop.runUntilIdle();
  EXPECT_EQ(log.size(), 1U);
}

Task<void> sleepInChildren(std::vector<std::string>* log) {
  TaskGroup group(co_await currentContext());
  group.add(sleepThenAppend(2s, "second", log));
  group.add(sleepThenAppend(1s, "first", log));
  co_await group.join();
  log->push_back("joined");
}

TEST(TaskGroup, RunsItsChildrenConcurrentlyAndJoinsThemAll) {
  VirtualLoop loop;
  TaskScope scope(loop);
  std::vector<std::string> log;
  scope.spawn(sleepInChildren(&log));
  loop.advance(1s);
  EXPECT_EQ(log, std::vector<std::string>{"first"});
  loop.advance(1s);
  EXPECT_EQ(log, (std::vector<std::string>{"first", "second", "joined"}));
}

TEST(TaskGroup, SharesTheCancellationOfTheTaskThatMadeIt) {
  VirtualLoop loop;
  TaskScope scope(loop);
  std::vector<std::string> log;
  TaskHandle task = scope.spawn(sleepInChildren(&log));
  loop.runUntilIdle();
  task.cancel();
  loop.runUntilIdle();
  ASSERT_EQ(log.size(), 3U);
  EXPECT_EQ(log.back(), "joined");
}

Task<void> throwing() {
  throw std::runtime_error("a child broke");
  co_return;
}

Task<void> joinThrowingChild() {
  TaskGroup group(co_await currentContext());
  group.add(throwing());
  co_await group.join();
}

TEST(TaskGroup, RethrowsWhatAChildThrew) {
  VirtualLoop loop;
  EXPECT_THROW(runTask(loop, joinThrowingChild()), std::runtime_error);
}

Task<void> joinNothing() {
  TaskGroup group(co_await currentContext());
  co_await group.join();
}

TEST(TaskGroup, WithoutChildrenIsJoinedAtOnce) {
  VirtualLoop loop;
  EXPECT_NO_THROW(runTask(loop, joinNothing()));
}

#ifndef NDEBUG
Task<void> forgetToJoin(std::vector<std::string>* log) {
  TaskGroup group(co_await currentContext());
  group.add(sleepThenAppend(1s, "child", log));
}

TEST(TaskGroupDeathTest, AssertsThatItWasJoined) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  VirtualLoop loop;
  std::vector<std::string> log;
  EXPECT_DEATH(runTask(loop, forgetToJoin(&log)), "join the group first");
}
#endif

Task<void> holdWhileSleeping(std::shared_ptr<int> held) {
  co_await sleepFor(1h);
  ++*held;
}

Task<void> holdInChildren(std::shared_ptr<int> held) {
  TaskGroup group(co_await currentContext());
  group.add(holdWhileSleeping(held));
  group.add(holdWhileSleeping(held));
  co_await group.join();
}

TEST(TaskScope, DestroysTheFramesOfTasksThatStillWait) {
  VirtualLoop loop;
  const auto held = std::make_shared<int>(0);
  {
    TaskScope scope(loop);
    scope.spawn(holdInChildren(held));
    loop.runUntilIdle();
    EXPECT_EQ(held.use_count(), 4);
  }
  EXPECT_EQ(held.use_count(), 1);
  loop.advance(2h);
  EXPECT_EQ(*held, 0);
}

TEST(TaskScope, DestroysTasksThatHaveNotStarted) {
  VirtualLoop loop;
  const auto held = std::make_shared<int>(0);
  {
    TaskScope scope(loop);
    scope.spawn(holdWhileSleeping(held));
  }
  EXPECT_EQ(held.use_count(), 1);
  loop.runUntilIdle();
}

/// An executor that runs each job on a thread of its own.
class NewThreads final : public Executor {
 public:
  ~NewThreads() override { join(); }
  void post(Job job) override { threads_.emplace_back(std::move(job)); }
  void join() {
    for (std::thread& thread : threads_)
      thread.join();
    threads_.clear();
  }

 private:
  std::vector<std::thread> threads_;
};

Task<void> noteThreads(Executor* queue, std::vector<std::thread::id>* ids) {
  ids->push_back(std::this_thread::get_id());
  const auto work = [] { return std::this_thread::get_id(); };
  ids->push_back(co_await runOn(*queue, work));
  ids->push_back(std::this_thread::get_id());
}

TEST(RunOn, RunsWorkOnTheQueueAndResumesOnTheLoop) {
  VirtualLoop loop;
  NewThreads queue;
  TaskScope scope(loop);
  std::vector<std::thread::id> ids;
  scope.spawn(noteThreads(&queue, &ids));
  loop.runUntilIdle();
  queue.join();
  loop.runUntilIdle();
  ASSERT_EQ(ids.size(), 3U);
  EXPECT_EQ(ids[0], std::this_thread::get_id());
  EXPECT_NE(ids[1], ids[0]);
  EXPECT_EQ(ids[2], ids[0]);
}

Task<void> throwOn(Executor* queue, std::string reason) {
  const auto work = [reason] { throw std::runtime_error(reason); };
  co_await runOn(*queue, work);
}

TEST(RunOn, RethrowsWhatTheWorkThrew) {
  VirtualLoop loop;
  EXPECT_THROW(runTask(loop, throwOn(&loop, "a reason that is too long for the string itself")),
               std::runtime_error);
}

Task<void> workWith(Executor* queue, std::shared_ptr<int> held) {
  const auto work = [held] { ++*held; };
  co_await runOn(*queue, work);
  ++*held;
}

TEST(RunOn, FinishesItsWorkWhenTheTaskIsGoneAndResumesNobody) {
  VirtualLoop loop;
  VirtualLoop queue;
  const auto held = std::make_shared<int>(0);
  {
    TaskScope scope(loop);
    scope.spawn(workWith(&queue, held));
    loop.runUntilIdle();
  }
  queue.runUntilIdle();
  loop.runUntilIdle();
  EXPECT_EQ(*held, 1);
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace kestrivane::test

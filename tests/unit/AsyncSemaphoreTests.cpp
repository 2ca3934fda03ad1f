#include <limits>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "async/TaskScope.hpp"
#include "engine/AsyncSemaphore.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {
namespace {

Task<void> takePermit(AsyncSemaphore* semaphore, int name, std::vector<int>* served) {
  co_await semaphore->wait();
  served->push_back(name);
}

class AsyncSemaphoreTest : public testing::Test {
 protected:
  void wait(AsyncSemaphore& semaphore, int name) {
    scope.spawn(takePermit(&semaphore, name, &served));
    loop.runUntilIdle();
  }

  VirtualLoop loop;
  std::vector<int> served;
  TaskScope scope{loop};
};

TEST_F(AsyncSemaphoreTest, WithTwoPermitsTheThirdWaitsUntilASignalHandsItOne) {
  AsyncSemaphore semaphore(2);
  wait(semaphore, 1);
  wait(semaphore, 2);
  wait(semaphore, 3);
  EXPECT_EQ(served, (std::vector{1, 2}));
  EXPECT_EQ(semaphore.value(), 0);
  semaphore.signal();
  EXPECT_EQ(semaphore.value(), 0) << "the permit is the waiter's before the waiter goes on";
  loop.runUntilIdle();
  EXPECT_EQ(served, (std::vector{1, 2, 3}));
  EXPECT_EQ(semaphore.value(), 0);
}

TEST_F(AsyncSemaphoreTest, ASignalWithoutWaitersFreesAPermitForTheNextWait) {
  AsyncSemaphore semaphore(0);
  semaphore.signal();
  EXPECT_EQ(semaphore.value(), 1);
  wait(semaphore, 1);
  EXPECT_EQ(served, std::vector{1});
  EXPECT_EQ(semaphore.value(), 0);
}

TEST_F(AsyncSemaphoreTest, WaitersResumeInTheOrderTheyCalledWait) {
  AsyncSemaphore semaphore(0);
  for (int name = 1; name <= 5; ++name)
    wait(semaphore, name);
  for (int i = 0; i < 5; ++i)
    semaphore.signal();
  loop.runUntilIdle();
  EXPECT_EQ(served, (std::vector{1, 2, 3, 4, 5}));
}

TEST_F(AsyncSemaphoreTest, ALateArrivalNeverOvertakesAWaiter) {
  AsyncSemaphore semaphore(0);
  wait(semaphore, 1);
  // It starts on the loop's next turn, before the waiter goes on, which does so after the signal.
  scope.spawn(takePermit(&semaphore, 2, &served));
  semaphore.signal();
  loop.runUntilIdle();
  EXPECT_EQ(served, std::vector{1});
  semaphore.signal();
  loop.runUntilIdle();
  EXPECT_EQ(served, (std::vector{1, 2}));
}

TEST_F(AsyncSemaphoreTest, MoreSignalsThanWaitsRaiseTheValueAboveItsInitialCount) {
  AsyncSemaphore semaphore(2);
  for (int i = 0; i < 3; ++i)
    semaphore.signal();
  EXPECT_EQ(semaphore.value(), 5);
}

TEST_F(AsyncSemaphoreTest, IsNotInterruptedByCancellation) {
  AsyncSemaphore semaphore(0);
  TaskHandle task = scope.spawn(takePermit(&semaphore, 1, &served));
  loop.runUntilIdle();
  task.cancel();
  loop.runUntilIdle();
  EXPECT_TRUE(served.empty());
}

TEST_F(AsyncSemaphoreTest, LeavesItsWaitersSuspendedWhenItIsDestroyed) {
  auto semaphore = std::make_unique<AsyncSemaphore>(0);
  wait(*semaphore, 1);
  semaphore.reset();
  loop.runUntilIdle();
  EXPECT_TRUE(served.empty());
}

TEST(AsyncSemaphoreDeathTest, MorePermitsThanCanBeCountedEndTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  AsyncSemaphore semaphore(std::numeric_limits<long>::max());
  EXPECT_DEATH(semaphore.signal(), "");
}

}  // namespace
}  // namespace kestrivane::test

#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "async/AsyncStream.hpp"
#include "async/TaskScope.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {
namespace {

struct Consumed {
  std::vector<int> values;
  bool ended = false;
};

Task<void> consume(AsyncStream<int> stream, Consumed* consumed) {
  while (const std::optional<int> value = co_await stream.next())
    consumed->values.push_back(*value);
  consumed->ended = true;
}

class AsyncStreamTest : public testing::Test {
 protected:
  AsyncStreamTest() : AsyncStreamTest(AsyncStream<int>::make()) {}

  VirtualLoop loop;
  TaskScope scope{loop};
  Consumed consumed;
  AsyncStream<int>::Continuation continuation;
  TaskHandle consumer;

 private:
  explicit AsyncStreamTest(std::pair<AsyncStream<int>, AsyncStream<int>::Continuation> ends)
      : continuation(ends.second),
        consumer(scope.spawn(consume(std::move(ends.first), &consumed))) {}
};

TEST_F(AsyncStreamTest, HandsOutValuesInTheOrderTheyWereYielded) {
  continuation.yield(1);
  continuation.yield(2);
  loop.runUntilIdle();
  continuation.yield(3);
  loop.runUntilIdle();
  EXPECT_EQ(consumed.values, (std::vector{1, 2, 3}));
  EXPECT_FALSE(consumed.ended);
}

TEST_F(AsyncStreamTest, StillHandsOutWhatItHoldsWhenItIsFinished) {
  continuation.yield(1);
  continuation.yield(2);
  continuation.finish();
  continuation.yield(3);
  loop.runUntilIdle();
  EXPECT_EQ(consumed.values, (std::vector{1, 2}));
  EXPECT_TRUE(consumed.ended);
}

TEST_F(AsyncStreamTest, EndsAWaitingConsumerWhenItIsFinished) {
  loop.runUntilIdle();
  EXPECT_FALSE(consumed.ended);
  continuation.finish();
  continuation.finish();
  loop.runUntilIdle();
  EXPECT_TRUE(consumed.ended);
}

TEST_F(AsyncStreamTest, IsFinishedByTheCancellationOfItsConsumer) {
  loop.runUntilIdle();
  consumer.cancel();
  loop.runUntilIdle();
  EXPECT_TRUE(consumed.ended);
  continuation.yield(1);
  loop.runUntilIdle();
  EXPECT_TRUE(consumed.values.empty());
}

TEST_F(AsyncStreamTest, TakesValuesFromManyThreads) {
  std::vector<std::thread> producers;
  for (int i = 0; i < 4; ++i) {
    producers.emplace_back([this] {
      for (int value = 0; value < 1000; ++value)
        continuation.yield(value);
    });
  }
  while (consumed.values.size() < 4000)
    loop.runUntilIdle();
  for (std::thread& producer : producers)
    producer.join();
  EXPECT_EQ(consumed.values.size(), 4000U);
}

TEST(AsyncStream, QueuesWithoutAConsumer) {
  VirtualLoop loop;
  auto [stream, continuation] = AsyncStream<int>::make();
  for (int value = 0; value < 10'000; ++value)
    continuation.yield(value);
  continuation.finish();
  Consumed consumed;
  TaskScope scope(loop);
  scope.spawn(consume(std::move(stream), &consumed));
  loop.runUntilIdle();
  EXPECT_EQ(consumed.values.size(), 10'000U);
  EXPECT_TRUE(consumed.ended);
}

}  // namespace
}  // namespace kestrivane::test

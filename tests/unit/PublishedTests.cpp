#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "state/Published.hpp"

namespace kestrivane::test {
namespace {

using Values = std::vector<int>;

TEST(Published, HandsOutThePresentValueAndEveryLaterOneEvenAnEqualOne) {
  Published<int> property(1);
  Values seen;
  const Subscription subscription =
      property.subscribe([&seen](int value) { seen.push_back(value); });
  property.set(2);
  property.set(2);
  property.modify([](int& value) { ++value; });
  EXPECT_EQ(property.value(), 3);
  EXPECT_EQ(seen, (Values{1, 2, 2, 3}));
}

TEST(Published, HoldsTheNewValueWhenItTellsOfIt) {
  Published<int> property(1);
  Values held;
  const Subscription subscription =
      property.subscribe([&](int) { held.push_back(property.value()); });
  property.set(2);
  EXPECT_EQ(held, (Values{1, 2}));
}

TEST(Published, TellsNobodyWhoseSubscriptionIsDropped) {
  Published<int> property(1);
  Values first;
  Values second;
  std::optional<Subscription> dropped(
      property.subscribe([&first](int value) { first.push_back(value); }));
  const Subscription kept = property.subscribe([&second](int value) { second.push_back(value); });
  dropped.reset();
  property.set(2);
  EXPECT_EQ(first, Values{1});
  EXPECT_EQ(second, (Values{1, 2}));
}

TEST(Published, LetsObserversDropSubscriptionsWhileTheyAreTold) {
  Published<int> property(0);
  Values seen;
  std::optional<Subscription> own;
  std::optional<Subscription> other;
  own.emplace(property.subscribe([&](int value) {
    seen.push_back(value);
    if (value == 0) return;
    own.reset();
    other.reset();
    seen.push_back(-value);  // its captures are still there
  }));
  other.emplace(property.subscribe([&](int value) { seen.push_back(10 + value); }));
  property.set(1);
  property.set(2);
  EXPECT_EQ(seen, (Values{0, 10, 1, -1}));
}

TEST(Published, LetsObserversSubscribeAndAssign) {
  Published<int> property(0);
  Values seen;
  std::vector<Subscription> late;
  const Subscription subscription = property.subscribe([&](int value) {
    if (value != 1) return;
    late.push_back(property.subscribe([&seen](int later) { seen.push_back(later); }));
    property.set(2);
  });
  property.set(1);
  property.set(3);
  EXPECT_EQ(seen, (Values{1, 2, 3}));
}

TEST(Published, MayGoBeforeItsSubscriptionsWhichOwnTheObservers) {
  auto property = std::make_optional<Published<int>>(1);
  auto capture = std::make_shared<int>(0);
  const std::weak_ptr<int> observer = capture;
  std::optional<Subscription> subscription(
      property->subscribe([capture = std::move(capture)](int) {}));
  property.reset();
  EXPECT_FALSE(observer.expired());
  subscription.reset();
  EXPECT_TRUE(observer.expired());
}

TEST(Published, KeepsNoObserverWhoseSubscriptionIsDropped) {
  Published<int> property(1);
  auto capture = std::make_shared<int>(0);
  const std::weak_ptr<int> observer = capture;
  std::optional<Subscription> subscription(
      property.subscribe([capture = std::move(capture)](int) {}));
  subscription.reset();
  EXPECT_TRUE(observer.expired());
}

}  // namespace
}  // namespace kestrivane::test

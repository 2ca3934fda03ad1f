// What all preferences do with registered values: the program's and those of the unit tests.

#include <functional>
#include <memory>

#include <gtest/gtest.h>

#include "platform/linux/system/VolatileUserDefaults.hpp"
#include "tests/support/FakeUserDefaults.hpp"

namespace kestrivane::test {
namespace {

using Factory = std::function<std::unique_ptr<UserDefaults>()>;

class UserDefaultsConformance : public testing::TestWithParam<Factory> {
 protected:
  const std::unique_ptr<UserDefaults> defaults = GetParam()();
};

TEST_P(UserDefaultsConformance, AreFalseForAKeyWithoutAValue) {
  EXPECT_FALSE(defaults->boolForKey("showSuccessNotifications"));
  EXPECT_FALSE(defaults->boolForKey(""));
}

TEST_P(UserDefaultsConformance, HaveTheRegisteredValue) {
  defaults->registerDefault("on", true);
  defaults->registerDefault("off", false);
  EXPECT_TRUE(defaults->boolForKey("on"));
  EXPECT_FALSE(defaults->boolForKey("off"));
  EXPECT_FALSE(defaults->boolForKey("o"));
}

TEST_P(UserDefaultsConformance, HaveTheValueThatWasRegisteredLast) {
  defaults->registerDefault("key", true);
  defaults->registerDefault("key", false);
  EXPECT_FALSE(defaults->boolForKey("key"));
}

INSTANTIATE_TEST_SUITE_P(Volatile, UserDefaultsConformance,
                         testing::Values([] { return std::make_unique<VolatileUserDefaults>(); }));
INSTANTIATE_TEST_SUITE_P(Fake, UserDefaultsConformance,
                         testing::Values([] { return std::make_unique<FakeUserDefaults>(); }));

}  // namespace
}  // namespace kestrivane::test

// What all preferences do: those in a file, those of programs that store nothing, and those of the
// unit tests.

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/system/FileUserDefaults.hpp"
#include "platform/linux/system/VolatileUserDefaults.hpp"
#include "tests/support/FakeBookmarks.hpp"
#include "tests/support/FakeLog.hpp"
#include "tests/support/FakeUserDefaults.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

using Array = std::vector<Data>;

class UserDefaultsSubject {
 public:
  UserDefaultsSubject() = default;
  UserDefaultsSubject(const UserDefaultsSubject&) = delete;
  UserDefaultsSubject& operator=(const UserDefaultsSubject&) = delete;
  virtual ~UserDefaultsSubject() = default;
  virtual UserDefaults& defaults() = 0;
};

template <typename Defaults>
class InMemoryUserDefaultsSubject final : public UserDefaultsSubject {
 public:
  UserDefaults& defaults() override { return defaults_; }

 private:
  Defaults defaults_;
};

class FileUserDefaultsSubject final : public UserDefaultsSubject {
 public:
  UserDefaults& defaults() override { return defaults_; }

 private:
  TemporaryFolder folder_;
  FakeLog log_;
  FileUserDefaults defaults_{folder_.url("kestrivane/defaults.json"), log_};
};

using UserDefaultsFactory = std::function<std::unique_ptr<UserDefaultsSubject>()>;

class UserDefaultsConformance : public testing::TestWithParam<UserDefaultsFactory> {
 protected:
  const std::unique_ptr<UserDefaultsSubject> subject = GetParam()();
  UserDefaults& defaults = subject->defaults();
};

TEST_P(UserDefaultsConformance, HaveNoValueForAKeyThatWasNeverSet) {
  EXPECT_FALSE(defaults.boolForKey("showSuccessNotifications"));
  EXPECT_FALSE(defaults.boolForKey(""));
  EXPECT_EQ(defaults.dataArrayForKey("bookmarks"), std::nullopt);
}

TEST_P(UserDefaultsConformance, HaveTheRegisteredValue) {
  defaults.registerDefault("on", true);
  defaults.registerDefault("off", false);
  EXPECT_TRUE(defaults.boolForKey("on"));
  EXPECT_FALSE(defaults.boolForKey("off"));
  EXPECT_FALSE(defaults.boolForKey("o"));
}

TEST_P(UserDefaultsConformance, HaveTheValueThatWasRegisteredLast) {
  defaults.registerDefault("key", true);
  defaults.registerDefault("key", false);
  EXPECT_FALSE(defaults.boolForKey("key"));
}

TEST_P(UserDefaultsConformance, PreferAValueThatWasSetToARegisteredOne) {
  defaults.setBool("key", false);
  defaults.registerDefault("key", true);
  EXPECT_FALSE(defaults.boolForKey("key"));
  defaults.setBool("key", true);
  EXPECT_TRUE(defaults.boolForKey("key"));
}

TEST_P(UserDefaultsConformance, GiveBackArraysOfAnyData) {
  Data allBytes;
  for (int byte = 0; byte < 256; ++byte)
    allBytes.push_back(static_cast<std::byte>(byte));
  const Array array{dataOf("second"), dataOf(""), allBytes, dataOf("a"), dataOf("ab")};
  defaults.setDataArray("bookmarks", array);
  EXPECT_EQ(defaults.dataArrayForKey("bookmarks"), array);
  defaults.setDataArray("bookmarks", {});
  EXPECT_EQ(defaults.dataArrayForKey("bookmarks"), Array{});
}

TEST_P(UserDefaultsConformance, TakeAValueOfAnotherKindForNone) {
  defaults.registerDefault("key", true);
  defaults.setDataArray("key", {dataOf("data")});
  EXPECT_FALSE(defaults.boolForKey("key"));
  defaults.setBool("key", true);
  EXPECT_EQ(defaults.dataArrayForKey("key"), std::nullopt);
  EXPECT_TRUE(defaults.boolForKey("key"));
}

INSTANTIATE_TEST_SUITE_P(File, UserDefaultsConformance, testing::Values([] {
                           return std::make_unique<FileUserDefaultsSubject>();
                         }));
INSTANTIATE_TEST_SUITE_P(
    Volatile, UserDefaultsConformance, testing::Values([] {
      return std::make_unique<InMemoryUserDefaultsSubject<VolatileUserDefaults>>();
    }));
INSTANTIATE_TEST_SUITE_P(Fake, UserDefaultsConformance, testing::Values([] {
                           return std::make_unique<InMemoryUserDefaultsSubject<FakeUserDefaults>>();
                         }));

}  // namespace
}  // namespace kestrivane::test

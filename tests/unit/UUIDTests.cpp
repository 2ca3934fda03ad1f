#include <set>
#include <string>

#include <gtest/gtest.h>

#include "platform/UUID.hpp"
#include "tests/support/UUIDForm.hpp"

namespace kestrivane::test {
namespace {

TEST(UUID, HasTheThirtySixCharacterUpperCaseFormOfARandomOne) {
  for (int i = 0; i < 100; ++i)
    EXPECT_TRUE(isUpperCaseUUID(makeUUIDString()));
}

TEST(UUID, IsFreshEveryTime) {
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i)
    seen.insert(makeUUIDString());
  EXPECT_EQ(seen.size(), 1000U);
}

}  // namespace
}  // namespace kestrivane::test

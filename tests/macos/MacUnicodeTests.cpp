#include <gtest/gtest.h>

#include "platform/Unicode.hpp"
#include "tests/macos/fakes/FakeSystem.hpp"

namespace kestrivane::test {
namespace {

TEST(MacUnicodeTests, aTextIsLoweredByTheSystem) {
  const UsedFakeSystem system;
  EXPECT_EQ(lowercased("JPG"), "jpg");
  EXPECT_EQ(lowercased("АБ.PNG"), "аб.png");
  EXPECT_EQ(lowercased(""), "");
}

TEST(MacUnicodeTests, inATextThatIsNotUTF8OnlyAToZChange) {
  const UsedFakeSystem system;
  EXPECT_EQ(lowercased("A\xFFZ\xD0"), "a\xFFz\xD0");
}

}  // namespace
}  // namespace kestrivane::test

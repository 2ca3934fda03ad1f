// The language as the environment names it.

#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "platform/Locale.hpp"
#include "tests/platform/system/EnvironmentGuard.hpp"

namespace kestrivane::test {
namespace {

using Value = std::optional<std::string>;

struct LocaleCase {
  Value all;
  Value messages;
  Value lang;
  Value expected;
};

class CurrentLanguage : public testing::TestWithParam<LocaleCase> {};

TEST_P(CurrentLanguage, IsThatOfTheFirstVariableWithAValue) {
  const EnvironmentGuard all("LC_ALL", GetParam().all);
  const EnvironmentGuard messages("LC_MESSAGES", GetParam().messages);
  const EnvironmentGuard lang("LANG", GetParam().lang);
  EXPECT_EQ(currentLanguageCode(), GetParam().expected);
}

const Value unset;

INSTANTIATE_TEST_SUITE_P(
    Environments, CurrentLanguage,
    testing::Values(LocaleCase{unset, unset, "ru_RU.UTF-8", "ru"},
                    LocaleCase{unset, "ru_UA.UTF-8", "en_GB.UTF-8", "ru"},
                    LocaleCase{"uk_UA.UTF-8", "ru_RU.UTF-8", "ru_RU.UTF-8", "uk"},
                    LocaleCase{"", "", "be_BY@latin", "be"},
                    LocaleCase{"", "ru", "en_GB.UTF-8", "ru"},
                    LocaleCase{"C", "ru_RU.UTF-8", "ru_RU.UTF-8", unset},
                    LocaleCase{unset, unset, "C.UTF-8", unset},
                    LocaleCase{unset, unset, "POSIX", unset},
                    LocaleCase{unset, unset, unset, unset}, LocaleCase{"", "", "", unset},
                    LocaleCase{unset, unset, "_RU", unset},
                    LocaleCase{unset, unset, "/usr/lib/locale/ru", unset},
                    LocaleCase{unset, unset, "ru.KOI8-R", "ru"}));

TEST(CurrentLanguage, IsAskedForAnewOnEveryCall) {
  const EnvironmentGuard english("LC_ALL", "en_GB.UTF-8");
  EXPECT_EQ(currentLanguageCode(), "en");
  const EnvironmentGuard russian("LC_ALL", "ru_RU.UTF-8");
  EXPECT_EQ(currentLanguageCode(), "ru");
}

}  // namespace
}  // namespace kestrivane::test

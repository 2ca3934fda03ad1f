#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "app/CommandLineAnswer.hpp"
#include "tests/support/FakeLocale.hpp"

namespace kestrivane::test {
namespace {

std::optional<std::string> answerTo(const std::vector<std::string_view>& arguments) {
  return commandLineAnswer(arguments, "1.2.3");
}

TEST(CommandLineAnswer, IsTheHelpInTheUsersLanguage) {
  for (const std::string_view option : {"--help", "-h"}) {
    EXPECT_TRUE(answerTo({option}).value().starts_with("Usage: kestrivane [FOLDER...]\n"));
    EXPECT_TRUE(answerTo({"/folder", option}).value().starts_with("Usage: "));
    const LanguageGuard russian("ru");
    EXPECT_TRUE(answerTo({option}).value().starts_with("Использование: kestrivane [ПАПКА...]\n"));
  }
}

TEST(CommandLineAnswer, IsTheVersion) {
  EXPECT_EQ(answerTo({"--version"}), "kestrivane 1.2.3\n");
}

TEST(CommandLineAnswer, IsNothingForFoldersWhateverTheirNames) {
  EXPECT_EQ(answerTo({}), std::nullopt);
  EXPECT_EQ(answerTo({"/folder", "help"}), std::nullopt);
  EXPECT_EQ(answerTo({"--", "--help", "--version"}), std::nullopt);
}

}  // namespace
}  // namespace kestrivane::test

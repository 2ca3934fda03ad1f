#include <filesystem>

#include <gtest/gtest.h>

#include "cli/CommandLine.hpp"
#include "tests/support/FakeLocale.hpp"

namespace kestrivane::test {
namespace {

using Action = CommandLine::Action;

CommandLine parse(const std::vector<std::string_view>& arguments) {
  return CommandLine::parse(arguments);
}

TEST(CommandLine, TakesEveryArgumentAsAFolder) {
  const CommandLine line = parse({"a", "/b/c"});
  EXPECT_EQ(line.action, Action::watch);
  EXPECT_EQ(line.folders, (std::vector<std::string>{"a", "/b/c"}));
}

TEST(CommandLine, TakesFoldersThatLookLikeOptionsAfterTwoDashes) {
  EXPECT_EQ(parse({"--", "--help"}).folders, std::vector<std::string>{"--help"});
}

TEST(CommandLine, KnowsHelpAndVersion) {
  EXPECT_EQ(parse({"--help"}).action, Action::showHelp);
  EXPECT_EQ(parse({"a", "-h"}).action, Action::showHelp);
  EXPECT_EQ(parse({"--version"}).action, Action::showVersion);
}

TEST(CommandLine, WatchesTheSavedFoldersWhereNoneIsNamed) {
  EXPECT_EQ(parse({}).action, Action::watchSaved);
  EXPECT_EQ(parse({"--"}).action, Action::watchSaved);
}

TEST(CommandLine, ChangesAndShowsTheSavedFolders) {
  EXPECT_EQ(parse({"--add", "a", "b"}).action, Action::add);
  EXPECT_EQ(parse({"a", "--add", "b"}).folders, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(parse({"--remove", "a"}).action, Action::remove);
  EXPECT_EQ(parse({"--remove", "--", "--add"}).folders, std::vector<std::string>{"--add"});
  EXPECT_EQ(parse({"--list"}).action, Action::list);
}

TEST(CommandLine, RefusesWhatCannotBeMeant) {
  EXPECT_EQ(parse({"--fast"}).action, Action::refuse);
  EXPECT_EQ(parse({"--fast"}).complaint, "There is no option --fast.");
  EXPECT_EQ(parse({"--add"}).complaint, "Name at least one folder.");
  EXPECT_EQ(parse({"--remove", "--"}).action, Action::refuse);
  EXPECT_EQ(parse({"--list", "a"}).complaint, "--list takes no folder.");
  EXPECT_EQ(parse({"--add", "a", "--remove", "b"}).complaint,
            "Take one of --add, --remove and --list at a time.");
  const LanguageGuard russian("ru");
  EXPECT_EQ(parse({"--add"}).complaint, "Укажите хотя бы одну папку.");
}

TEST(AbsoluteFolderPath, LosesDotsAndSlashesAtTheEnd) {
  const std::string here = std::filesystem::current_path().native();
  EXPECT_EQ(absoluteFolderPath("."), here);
  EXPECT_EQ(absoluteFolderPath("pictures/"), here + "/pictures");
  EXPECT_EQ(absoluteFolderPath("/usr//./share///"), "/usr/share");
  EXPECT_EQ(absoluteFolderPath("/"), "/");
  EXPECT_EQ(absoluteFolderPath("/usr/share/.."), "/usr");
}

}  // namespace
}  // namespace kestrivane::test

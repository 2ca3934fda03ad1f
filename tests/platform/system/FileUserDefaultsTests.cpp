// The file that preferences are kept in: what it looks like, who else may write to it, and what
// becomes of it when it is damaged.

#include <cerrno>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/system/ConfigurationFolder.hpp"
#include "platform/linux/system/FileLock.hpp"
#include "platform/linux/system/FileUserDefaults.hpp"
#include "tests/platform/system/ChildProcess.hpp"
#include "tests/platform/system/EnvironmentGuard.hpp"
#include "tests/platform/system/FlushHook.hpp"
#include "tests/support/FakeBookmarks.hpp"
#include "tests/support/FakeLog.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

namespace fs = std::filesystem;
using Array = std::vector<Data>;
using Names = std::set<std::string>;

unsigned modeOf(const FileURL& url) {
  struct stat status {};
  return stat(url.path().c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
}

class FileUserDefaultsTest : public testing::Test {
 protected:
  FileUserDefaults open() { return FileUserDefaults(file, log); }
  void write(const std::string& content) { folder.write("defaults.json", content); }
  std::string content() { return contentOf(file); }

  /// The name of the file that was set aside; empty if there is none.
  std::string asideName() {
    for (const std::string& name : folder.names())
      if (name.starts_with("defaults.json.damaged-")) return name;
    return {};
  }

  TemporaryFolder folder;
  const FileURL file = folder.url("defaults.json");
  FakeLog log;
};

TEST_F(FileUserDefaultsTest, KeepWhatWasSetForTheNextStart) {
  open().setBool("on", true);
  open().setBool("off", false);
  open().setDataArray("array", {dataOf("one"), dataOf("two")});
  const auto next = open();
  EXPECT_TRUE(next.boolForKey("on"));
  EXPECT_FALSE(next.boolForKey("off"));
  EXPECT_EQ(next.dataArrayForKey("array"), (Array{dataOf("one"), dataOf("two")}));
  EXPECT_TRUE(log.entries.empty());
}

TEST_F(FileUserDefaultsTest, AreReadableTextWithAMemberForEachKey) {
  auto defaults = open();
  defaults.setBool("on", true);
  defaults.setDataArray("array", {dataOf("one")});
  EXPECT_EQ(content(), R"({
  "on": true,
  "array": [
    {
      "data": "b25l"
    }
  ]
}
)");
}

TEST_F(FileUserDefaultsTest, DoNotStoreRegisteredValues) {
  auto defaults = open();
  defaults.registerDefault("registered", true);
  EXPECT_TRUE(defaults.boolForKey("registered"));
  EXPECT_TRUE(folder.names().empty());
  defaults.setBool("other", true);
  EXPECT_EQ(content().find("registered"), std::string::npos);
}

TEST_F(FileUserDefaultsTest, LeaveWhatWasWrittenByHandAsItIsAndWhereItIs) {
  write(R"({"z": {"nested": [1, 2.5, null, "ё"]}, "on": true, "a": -7, "big": 9007199254740993})");
  open().setBool("on", false);
  EXPECT_EQ(content(), R"({
  "z": {
    "nested": [
      1,
      2.5,
      null,
      "ё"
    ]
  },
  "on": false,
  "a": -7,
  "big": 9007199254740993
}
)");
}

TEST_F(FileUserDefaultsTest, TakeNothingButBooleansForABoolean) {
  write(R"({"text": "true", "number": 1, "null": null, "yes": true})");
  auto defaults = open();
  for (const char* const key : {"text", "number", "null"}) {
    defaults.registerDefault(key, true);
    EXPECT_FALSE(defaults.boolForKey(key)) << key;
  }
  EXPECT_TRUE(defaults.boolForKey("yes"));
}

TEST_F(FileUserDefaultsTest, RejectAnArrayWithAnElementThatIsNotData) {
  for (const char* const element :
       {R"("text")", "1", "null", "[]", "{}", R"({"data": 1})", R"({"data": "YQ"})",
        R"({"data": "YR=="})", R"({"data": "Y Q="})", R"({"data": "YQ==", "more": 1})"}) {
    write(R"({"array": [{"data": "YQ=="}, )" + std::string(element) + "]}");
    EXPECT_EQ(open().dataArrayForKey("array"), std::nullopt) << element;
  }
  write(R"({"array": [{"data": "YQ=="}]})");
  EXPECT_EQ(open().dataArrayForKey("array"), Array{dataOf("a")});
}

TEST_F(FileUserDefaultsTest, AreTheUsersAlone) {
  const FileURL nested = folder.url("config/kestrivane/defaults.json");
  FileUserDefaults(nested, log).setBool("on", true);
  EXPECT_EQ(modeOf(nested), 0600U);
  EXPECT_EQ(modeOf(nested.deletingLastPathComponent()), 0700U);
  EXPECT_EQ(modeOf(folder.url("config")), 0700U);
  fs::permissions(nested.path(), fs::perms::all);
  FileUserDefaults(nested, log).setBool("on", false);
  EXPECT_EQ(modeOf(nested), 0600U);
}

TEST_F(FileUserDefaultsTest, SeeWhatAnotherProcessHasWritten) {
  auto ours = open();
  auto theirs = open();
  ours.setBool("ours", true);
  EXPECT_TRUE(theirs.boolForKey("ours"));
  theirs.setBool("theirs", true);
  EXPECT_TRUE(ours.boolForKey("theirs"));
  theirs.setBool("ours", false);
  EXPECT_FALSE(ours.boolForKey("ours"));
  fs::remove(file.path());
  EXPECT_FALSE(ours.boolForKey("theirs"));
}

TEST_F(FileUserDefaultsTest, LoseNothingWhenManyProcessesWriteAtOnce) {
  constexpr int processes = 4;
  constexpr int changes = 25;
  std::vector<pid_t> children;
  for (int process = 0; process < processes; ++process) {
    children.push_back(fork());
    if (children.back() != 0) continue;
    FileUserDefaults defaults(file, log);
    for (int i = 0; i < changes; ++i) {
      const std::string name = std::to_string(process) + "-" + std::to_string(i);
      defaults.setBool(name, true);
      defaults.updateDataArray("array", [&](Array& array) { array.push_back(dataOf(name)); });
    }
    _exit(0);
  }
  for (const pid_t child : children) {
    ASSERT_GT(child, 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }

  const auto defaults = open();
  EXPECT_EQ(defaults.dataArrayForKey("array").value_or(Array{}).size(),
            static_cast<std::size_t>(processes * changes));
  for (int process = 0; process < processes; ++process)
    for (int i = 0; i < changes; ++i)
      EXPECT_TRUE(defaults.boolForKey(std::to_string(process) + "-" + std::to_string(i)));
  EXPECT_EQ(folder.names(), (Names{"defaults.json", "defaults.json.lock"}));
}

TEST_F(FileUserDefaultsTest, KeepWhatOthersMakeOfAnArrayBetweenReadingAndWriting) {
  const Data a = dataOf("a"), b = dataOf("b"), ours = dataOf("ours"), theirs = dataOf("theirs");
  auto theirDefaults = open();
  theirDefaults.setDataArray("array", {a, b});
  auto defaults = open();
  EXPECT_EQ(defaults.dataArrayForKey("array"), (Array{a, b}));
  theirDefaults.setDataArray("array", {b, theirs});
  // Not seen here yet, however often the array is set; other values may be.
  EXPECT_FALSE(defaults.boolForKey("on"));
  for (int i = 0; i < 2; ++i) {
    defaults.setDataArray("array", {a, b, ours});
    EXPECT_EQ(open().dataArrayForKey("array"), (Array{b, ours, theirs}));
  }
  EXPECT_EQ(defaults.dataArrayForKey("array"), (Array{b, ours, theirs}));
  defaults.setDataArray("array", {ours});
  EXPECT_EQ(open().dataArrayForKey("array"), Array{ours});
}

TEST_F(FileUserDefaultsTest, TakeTheSameAdditionForOne) {
  auto defaults = open();
  EXPECT_EQ(defaults.dataArrayForKey("array"), std::nullopt);
  open().setDataArray("array", {dataOf("theirs"), dataOf("both")});
  defaults.setDataArray("array", {dataOf("both")});
  EXPECT_EQ(open().dataArrayForKey("array"), (Array{dataOf("both"), dataOf("theirs")}));
}

TEST_F(FileUserDefaultsTest, ReplaceAnArrayThatWasNeverAskedFor) {
  open().setDataArray("array", {dataOf("old")});
  open().setDataArray("array", {dataOf("new")});
  EXPECT_EQ(open().dataArrayForKey("array"), Array{dataOf("new")});
}

TEST_F(FileUserDefaultsTest, TakeAnArrayThatIsLostOrSpoiledForNoChangeOfIt) {
  for (const char* const lost : {"{}", R"({"array": ["by hand"]})", "damaged"}) {
    open().setDataArray("array", {dataOf("a")});
    auto defaults = open();
    EXPECT_EQ(defaults.dataArrayForKey("array"), Array{dataOf("a")});
    write(lost);
    defaults.setDataArray("array", {dataOf("a"), dataOf("b")});
    EXPECT_EQ(open().dataArrayForKey("array"), (Array{dataOf("a"), dataOf("b")})) << lost;
  }
}

TEST_F(FileUserDefaultsTest, KeepWhatOthersMakeOfAnArrayThatCouldNotBeStored) {
  auto defaults = open();
  EXPECT_EQ(defaults.dataArrayForKey("array"), std::nullopt);
  {
    const FlushHook fullDisk([](int) { return ENOSPC; });
    defaults.setDataArray("array", {dataOf("ours")});
  }
  open().setDataArray("array", {dataOf("theirs")});
  EXPECT_EQ(defaults.dataArrayForKey("array"), (Array{dataOf("ours"), dataOf("theirs")}));
  defaults.setBool("on", true);
  EXPECT_EQ(open().dataArrayForKey("array"), (Array{dataOf("ours"), dataOf("theirs")}));
}

TEST_F(FileUserDefaultsTest, SetADamagedFileAsideUnderAnotherName) {
  for (const std::string damaged : {"{\"on\": true", "[]", "true", "{\"on\": tru}", "\xFF\xFE",
                                    "{} {}", "{\"a\": \"\xFF\"}", "{'on': true}"}) {
    log.entries.clear();
    write(damaged);
    auto defaults = open();
    defaults.registerDefault("on", true);
    EXPECT_TRUE(defaults.boolForKey("on")) << damaged;
    const std::string aside = asideName();
    EXPECT_EQ(contentOf(folder.url(aside)), damaged);
    EXPECT_FALSE(fs::exists(file.path()));
    ASSERT_EQ(log.messages(LogLevel::error).size(), 1U) << damaged;
    EXPECT_NE(log.messages(LogLevel::error)[0].find(folder.url(aside).path()), std::string::npos);
    EXPECT_EQ(log.entries[0].category, "UserDefaults");

    defaults.setBool("on", false);
    EXPECT_FALSE(open().boolForKey("on"));
    fs::remove(folder.url(aside).path());
  }
}

TEST_F(FileUserDefaultsTest, TakeAnEmptyFileForOneWithoutValues) {
  write(" \n");
  EXPECT_FALSE(open().boolForKey("on"));
  EXPECT_EQ(asideName(), "");
  EXPECT_TRUE(log.entries.empty());
}

TEST_F(FileUserDefaultsTest, HoldWhatCannotBeStoredAndStoreItLater) {
  write(R"({"old": true})");
  auto defaults = open();
  {
    const FlushHook fullDisk([](int) { return ENOSPC; });
    defaults.setBool("new", true);
  }
  EXPECT_TRUE(defaults.boolForKey("new"));
  EXPECT_TRUE(defaults.boolForKey("old"));
  EXPECT_EQ(content(), R"({"old": true})");
  EXPECT_EQ(log.messages(LogLevel::error).size(), 1U);
  EXPECT_EQ(folder.names(), (Names{"defaults.json", "defaults.json.lock"}));

  write(R"({"theirs": true})");  // as another process would
  EXPECT_TRUE(defaults.boolForKey("new"));
  EXPECT_TRUE(defaults.boolForKey("theirs"));
  EXPECT_FALSE(defaults.boolForKey("old"));

  defaults.setBool("more", true);
  for (const char* const key : {"new", "theirs", "more"})
    EXPECT_TRUE(open().boolForKey(key)) << key;
}

TEST_F(FileUserDefaultsTest, AreTheOldOrTheNewOnesWheneverTheProcessDies) {
  // The first flush is that of the new content, the second that of its name.
  for (const int flush : {1, 2}) {
    write(R"({"on": true})");
    const std::string report = reportOfChild([this, flush] {
      const FlushHook death([flush](int number) {
        if (number == flush) _exit(7);
        return 0;
      });
      open().setDataArray("array", Array(1000, dataOf("a bookmark")));
      return "survived";
    });
    EXPECT_EQ(report, "died");
    auto defaults = open();
    EXPECT_TRUE(defaults.boolForKey("on"));
    EXPECT_EQ(defaults.dataArrayForKey("array").has_value(), flush == 2);
    defaults.setBool("next", true);
    EXPECT_EQ(folder.names(), (Names{"defaults.json", "defaults.json.lock"}));
  }
}

TEST_F(FileUserDefaultsTest, ReplaceWhatALinkLeadsTo) {
  const TemporaryFolder elsewhere;
  const FileURL target = elsewhere.write("mine.json", R"({"on": true})");
  fs::create_symlink(target.path(), file.path());
  open().setBool("off", false);
  EXPECT_TRUE(fs::is_symlink(file.path()));
  EXPECT_NE(contentOf(target).find("\"off\": false"), std::string::npos);
}

TEST_F(FileUserDefaultsTest, RefuseToBeAFolderOrAPipe) {
  fs::create_directory(file.path());
  auto defaults = open();
  defaults.registerDefault("on", true);
  EXPECT_TRUE(defaults.boolForKey("on"));
  defaults.setBool("on", false);
  EXPECT_FALSE(defaults.boolForKey("on"));
  EXPECT_EQ(log.messages(LogLevel::error).size(), 2U);
  fs::remove(file.path());

  ASSERT_EQ(mkfifo(file.path().c_str(), 0600), 0);
  EXPECT_FALSE(open().boolForKey("on"));
}

TEST_F(FileUserDefaultsTest, UpdateAnArrayOrSayWhyNot) {
  auto defaults = open();
  const auto append = [](Array& array) { array.push_back(dataOf("x")); };
  defaults.updateDataArray("array", append);
  defaults.updateDataArray("array", append);
  EXPECT_EQ(defaults.dataArrayForKey("array"), (Array{dataOf("x"), dataOf("x")}));

  const FlushHook fullDisk([](int) { return ENOSPC; });
  try {
    defaults.updateDataArray("array", append);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.code(), ENOSPC);
  }
  EXPECT_EQ(defaults.dataArrayForKey("array"), (Array{dataOf("x"), dataOf("x")}));
}

TEST_F(FileUserDefaultsTest, UpdateNoArrayThatHoldsSomethingElse) {
  write(R"({"array": [{"data": "YQ=="}, "by hand"]})");
  EXPECT_THROW(open().updateDataArray("array", [](Array& array) { array.clear(); }), PlatformError);
  EXPECT_EQ(content(), R"({"array": [{"data": "YQ=="}, "by hand"]})");
}

TEST(ConfigurationFolder, IsInTheFolderThatTheEnvironmentNames) {
  const EnvironmentGuard home("HOME", "/home/ada");
  {
    const EnvironmentGuard configuration("XDG_CONFIG_HOME", "/etc/ada");
    EXPECT_EQ(configurationFolder().path(), "/etc/ada/kestrivane");
  }
  for (const std::optional<std::string>& unusable :
       {std::optional<std::string>("relative"), std::optional<std::string>(""),
        std::optional<std::string>()}) {
    const EnvironmentGuard configuration("XDG_CONFIG_HOME", unusable);
    EXPECT_EQ(configurationFolder().path(), "/home/ada/.config/kestrivane");
  }
}

TEST(FileLock, IsHeldByOneAtATime) {
  const TemporaryFolder folder;
  const std::string path = folder.url("lock").path();
  {
    const FileLock lock = FileLock::take(path);
    EXPECT_FALSE(FileLock::tryTake(path));
    EXPECT_EQ(reportOfChild([&] { return FileLock::tryTake(path) ? "taken" : "held"; }), "held");
  }
  EXPECT_TRUE(FileLock::tryTake(path));
}

}  // namespace
}  // namespace kestrivane::test

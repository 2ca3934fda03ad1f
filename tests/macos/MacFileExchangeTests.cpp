// The exchange of two files' names, over real files: what somebody else does to the original
// meanwhile is never lost.
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/macos/FileExchange.hpp"
#include "tests/macos/fakes/FakeRename.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

class MacFileExchangeTests : public testing::Test {
 protected:
  TemporaryFolder folder_;
  TemporaryFolder other_;
  const FileURL original_ = folder_.write("a.jpg", "old");
  const FileURL fresh_ = other_.write("fresh", "new content");
  const FileVersion expected_ = versionAt(original_);

  ExchangeResult exchange() { return exchangeFiles(original_, fresh_, expected_); }

  void save(const std::string& content) {
    folder_.write("saving", content);
    std::rename(folder_.url("saving").path().c_str(), original_.path().c_str());
  }

  void expectContents(const std::string& original, const std::string& fresh) {
    EXPECT_EQ(contentOf(original_), original);
    EXPECT_EQ(contentOf(fresh_), fresh);
    EXPECT_EQ(folder_.names(), std::set<std::string>{"a.jpg"});
    EXPECT_EQ(other_.names(), std::set<std::string>{"fresh"});
  }
};

TEST_F(MacFileExchangeTests, eachFileGetsTheOthersName) {
  EXPECT_EQ(exchange(), ExchangeResult::exchanged);
  expectContents("new content", "old");
}

TEST_F(MacFileExchangeTests, nothingHappensWhereTheVolumeCannotExchange) {
  const RenameHook hook([](int) { return ENOTSUP; });
  EXPECT_EQ(exchange(), ExchangeResult::refused);
  expectContents("old", "new content");
}

TEST_F(MacFileExchangeTests, anOriginalThatIsGoneIsNotBroughtBack) {
  unlink(original_.path().c_str());
  EXPECT_EQ(exchange(), ExchangeResult::refused);
  EXPECT_EQ(folder_.names(), std::set<std::string>());
  EXPECT_EQ(contentOf(fresh_), "new content");
}

TEST_F(MacFileExchangeTests, aFileThatWasSavedOverTheOriginalIsPutBack) {
  save("saved");
  EXPECT_EQ(exchange(), ExchangeResult::changed);
  expectContents("saved", "new content");
}

TEST_F(MacFileExchangeTests, whatWasWrittenIntoTheOriginalStaysInPlace) {
  std::ofstream(original_.path(), std::ios::app) << " and more";
  EXPECT_EQ(exchange(), ExchangeResult::changed);
  expectContents("old and more", "new content");
}

TEST_F(MacFileExchangeTests, aFolderThatHasTakenTheNameIsPutBack) {
  unlink(original_.path().c_str());
  mkdir(original_.path().c_str(), 0700);
  EXPECT_EQ(exchange(), ExchangeResult::changed);
  struct stat status {};
  ASSERT_EQ(stat(original_.path().c_str(), &status), 0);
  EXPECT_TRUE(S_ISDIR(status.st_mode));
  EXPECT_EQ(contentOf(fresh_), "new content");
}

TEST_F(MacFileExchangeTests, whatWasTakenGetsItsNameBackThoughTheNameHasGone) {
  save("saved");
  const RenameHook hook([&](int call) { return call == 2 ? unlink(original_.path().c_str()) : 0; });
  EXPECT_EQ(exchange(), ExchangeResult::changed);
  EXPECT_EQ(contentOf(original_), "saved");
  EXPECT_EQ(other_.names(), std::set<std::string>());
}

TEST_F(MacFileExchangeTests, noneOfTwoFilesSavedOverTheOriginalIsLost) {
  save("saved");
  const RenameHook hook([&](int call) {
    if (call == 2) save("saved again");
    return 0;
  });
  EXPECT_EQ(exchange(), ExchangeResult::stranded);
  expectContents("saved", "saved again");
}

TEST_F(MacFileExchangeTests, whatWasTakenStaysWhereItIsWhenAnotherFileHasTakenTheName) {
  save("saved");
  const RenameHook hook([&](int call) {
    if (call == 2) unlink(original_.path().c_str());
    if (call == 3) save("saved again");
    return 0;
  });
  EXPECT_EQ(exchange(), ExchangeResult::stranded);
  expectContents("saved again", "saved");
}

}  // namespace
}  // namespace kestrivane::test

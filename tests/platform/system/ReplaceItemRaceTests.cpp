// What another program does to the original while it is being replaced is never undone or lost.

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <functional>
#include <set>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/system/LinuxFileManager.hpp"
#include "tests/platform/system/ChildProcess.hpp"
#include "tests/platform/system/FlushHook.hpp"
#include "tests/platform/system/SystemCallFilter.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

using Names = std::set<std::string>;

/// Whether the file system can exchange two names.
enum class Exchange { possible, impossible };

class ReplaceItemRace : public testing::TestWithParam<Exchange> {
 protected:
  TemporaryFolder folder;
  TemporaryFolder other;
  LinuxFileManager manager;
  const FileURL original = folder.write("a.jpg", "old");
  const FileURL replacement = other.write("new", "new content");

  void SetUp() override {
    const timespec longAgo{1'000'000'000, 0};
    const timespec times[] = {longAgo, longAgo};
    utimensat(AT_FDCWD, original.path().c_str(), times, 0);
  }

  /// The outcome of replacing, in a process that can be denied the exchange, while somebody does
  /// `interfere` when the new file is ready.
  std::string reportOfReplacing(const std::function<void()>& interfere) {
    return reportOfChild([&] {
      if (GetParam() == Exchange::impossible)
        refuseSystemCall(SYS_renameat2, 4, RENAME_EXCHANGE, EINVAL);
      const FlushHook hook([&](int flush) {
        if (flush == 1) interfere();
        return 0;
      });
      manager.replaceItem(original, replacement, manager.versionOfItem(original));
      return std::string("replaced");
    });
  }

  const std::string changed = "error " + std::to_string(ESTALE);
  const std::string gone = "error " + std::to_string(ENOENT);
};

TEST_P(ReplaceItemRace, KeepsTheFileThatWasSavedOverTheOriginal) {
  EXPECT_EQ(reportOfReplacing([&] {
              folder.write("saving", "saved by the user");
              std::rename(folder.url("saving").path().c_str(), original.path().c_str());
            }),
            changed);
  EXPECT_EQ(contentOf(original), "saved by the user");
  EXPECT_EQ(folder.names(), Names{"a.jpg"});
  EXPECT_EQ(contentOf(replacement), "new content");
}

TEST_P(ReplaceItemRace, KeepsWhatWasWrittenIntoTheOriginal) {
  EXPECT_EQ(reportOfReplacing([&] { std::ofstream(original.path(), std::ios::binary) << "OLD"; }),
            changed);
  EXPECT_EQ(contentOf(original), "OLD");
  EXPECT_EQ(folder.names(), Names{"a.jpg"});
}

TEST_P(ReplaceItemRace, LeavesAnOriginalThatWasRenamedAwayAndMakesNoSecondFile) {
  EXPECT_EQ(reportOfReplacing(
                [&] { std::rename(original.path().c_str(), folder.url("b.gif").path().c_str()); }),
            gone);
  EXPECT_EQ(contentOf(folder.url("b.gif")), "old");
  EXPECT_EQ(folder.names(), Names{"b.gif"});
}

TEST_P(ReplaceItemRace, DoesNotBringBackAnOriginalThatWasDeleted) {
  EXPECT_EQ(reportOfReplacing([&] { unlink(original.path().c_str()); }), gone);
  EXPECT_EQ(folder.names(), Names{});
  EXPECT_EQ(contentOf(replacement), "new content");
}

TEST_P(ReplaceItemRace, LeavesAFolderThatHasTakenTheName) {
  EXPECT_EQ(reportOfReplacing([&] {
              unlink(original.path().c_str());
              mkdir(original.path().c_str(), 0700);
              folder.write("a.jpg/inside", "kept");
            }),
            changed);
  EXPECT_EQ(contentOf(folder.url("a.jpg/inside")), "kept");
  EXPECT_EQ(folder.names(), Names{"a.jpg"});
}

TEST_P(ReplaceItemRace, FollowsAFolderThatIsRenamedMeanwhile) {
  EXPECT_EQ(reportOfReplacing(
                [&] { std::rename(folder.path().c_str(), (folder.path() + "-moved").c_str()); }),
            "replaced");
  std::rename((folder.path() + "-moved").c_str(), folder.path().c_str());
  EXPECT_EQ(contentOf(original), "new content");
  EXPECT_EQ(folder.names(), Names{"a.jpg"});
}

INSTANTIATE_TEST_SUITE_P(WithExchange, ReplaceItemRace,
                         testing::Values(Exchange::possible, Exchange::impossible),
                         [](const auto& exchange) {
                           return exchange.param == Exchange::possible ? "Possible" : "Impossible";
                         });

}  // namespace
}  // namespace kestrivane::test

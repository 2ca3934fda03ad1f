// A process that dies in the middle of replacing a file leaves the old one or the new one, whole.

#include <csignal>
#include <random>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/StagingName.hpp"
#include "platform/linux/system/LinuxFileManager.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

constexpr std::size_t fileLength = 100'000;
constexpr int kills = 25;

/// A whole file is `fileLength` times one letter.
bool isWhole(const std::string& content) {
  return content.size() == fileLength &&
         content.find_first_not_of(content.front()) == std::string::npos;
}

class ReplaceItemCrash : public testing::TestWithParam<const char*> {
 protected:
  TemporaryFolder folder{"/var/tmp"};
  TemporaryFolder other{GetParam()};
  const FileURL original = folder.write("a.jpg", std::string(fileLength, 'a'));

  void replaceOnce(LinuxFileManager& manager, char letter) {
    manager.replaceItem(original, other.write("new", std::string(fileLength, letter)),
                        manager.versionOfItem(original));
  }

  [[noreturn]] void replaceForever() {
    LinuxFileManager manager;
    for (char letter = 'b';; letter = letter == 'z' ? 'b' : static_cast<char>(letter + 1))
      replaceOnce(manager, letter);
  }
};

TEST_P(ReplaceItemCrash, LeavesAWholeFileWheneverTheProcessIsKilled) {
  std::minstd_rand random(20260401);
  std::uniform_int_distribution<int> lookCount(1, 8);
  int replacementsSeen = 0;
  for (int i = 0; i < kills; ++i) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) replaceForever();
    char last = contentOf(original).front();
    // The looks take the place of a random time, and a reader never sees a part either.
    for (int looks = lookCount(random); looks > 0;) {
      const std::string content = contentOf(original);
      if (!isWhole(content)) {
        ADD_FAILURE() << "a part of " << content.size() << " bytes";
        break;
      }
      if (content.front() == last) continue;
      last = content.front();
      ++replacementsSeen;
      --looks;
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    ASSERT_TRUE(isWhole(contentOf(original)));
    for (const std::string& name : folder.names()) {
      if (name == "a.jpg") continue;
      EXPECT_TRUE(name.starts_with(stagingPrefix)) << name;
      EXPECT_TRUE(isWhole(contentOf(folder.url(name))));
      unlink(folder.url(name).path().c_str());
    }
  }
  EXPECT_GE(replacementsSeen, kills);

  LinuxFileManager manager;
  replaceOnce(manager, 'a');
  EXPECT_EQ(folder.names(), std::set<std::string>{"a.jpg"});
}

INSTANTIATE_TEST_SUITE_P(From, ReplaceItemCrash, testing::Values("/var/tmp", "/dev/shm"),
                         [](const auto& base) {
                           return std::string(base.param) == "/dev/shm" ? "AnotherFileSystem"
                                                                        : "SameFileSystem";
                         });

}  // namespace
}  // namespace kestrivane::test

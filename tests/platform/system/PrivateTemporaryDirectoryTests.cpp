// The user's temporary folder, and what may stand in its way.

#include <cerrno>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/system/LinuxFileManager.hpp"
#include "tests/platform/system/ChildProcess.hpp"
#include "tests/platform/system/EnvironmentGuard.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

class PrivateTemporaryDirectoryTest : public testing::Test {
 protected:
  TemporaryFolder base;
  EnvironmentGuard environment{"TMPDIR", base.path()};
  const std::string usualName = "kestrivane-" + std::to_string(geteuid());
  const std::string usual = base.url(usualName).path();
  std::unique_ptr<LinuxFileManager> manager = std::make_unique<LinuxFileManager>();

  /// The manager avoids what stands under the usual name, and cleans up after itself.
  void expectAnotherFolder() {
    const FileURL folder = manager->temporaryDirectory();
    EXPECT_NE(folder.path(), usual);
    EXPECT_EQ(folder.deletingLastPathComponent().path(), base.path());
    expectPrivate(folder);
    EXPECT_EQ(manager->temporaryDirectory(), folder);
    manager.reset();
    EXPECT_EQ(base.names(), std::set<std::string>{usualName});
  }

  static void expectPrivate(const FileURL& folder) {
    struct stat status;
    ASSERT_EQ(lstat(folder.path().c_str(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777, 0700U);
    EXPECT_EQ(status.st_uid, geteuid());
  }
};

TEST_F(PrivateTemporaryDirectoryTest, IsOnlyForTheUser) {
  const FileURL folder = manager->temporaryDirectory();
  EXPECT_EQ(folder.path(), usual);
  expectPrivate(folder);
}

TEST_F(PrivateTemporaryDirectoryTest, IsTheSameAtTheNextStart) {
  const FileURL folder = manager->temporaryDirectory();
  manager = std::make_unique<LinuxFileManager>();
  EXPECT_EQ(manager->temporaryDirectory(), folder);
}

TEST_F(PrivateTemporaryDirectoryTest, IsMadeAnewWhenItWasCleanedAway) {
  const FileURL folder = manager->temporaryDirectory();
  ASSERT_EQ(rmdir(folder.path().c_str()), 0);
  EXPECT_EQ(manager->temporaryDirectory(), folder);
  expectPrivate(folder);
}

TEST_F(PrivateTemporaryDirectoryTest, AvoidsAFileOfItsName) {
  base.write(usualName, "");
  expectAnotherFolder();
}

TEST_F(PrivateTemporaryDirectoryTest, AvoidsALinkToAnotherFolder) {
  const TemporaryFolder trap;
  chmod(trap.path().c_str(), 0700);
  ASSERT_EQ(symlink(trap.path().c_str(), usual.c_str()), 0);
  expectAnotherFolder();
}

TEST_F(PrivateTemporaryDirectoryTest, AvoidsAFolderThatOthersMayEnter) {
  ASSERT_EQ(mkdir(usual.c_str(), 0755), 0);
  ASSERT_EQ(chmod(usual.c_str(), 0755), 0);
  expectAnotherFolder();
}

TEST_F(PrivateTemporaryDirectoryTest, AvoidsAFolderOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make a folder of somebody else's";
  ASSERT_EQ(mkdir(usual.c_str(), 0700), 0);
  ASSERT_EQ(chown(usual.c_str(), 12345, 12345), 0);
  expectAnotherFolder();
}

TEST_F(PrivateTemporaryDirectoryTest, MakesAnotherOneAnewToo) {
  base.write(usualName, "");
  const FileURL folder = manager->temporaryDirectory();
  ASSERT_EQ(rmdir(folder.path().c_str()), 0);
  expectPrivate(manager->temporaryDirectory());
}

TEST_F(PrivateTemporaryDirectoryTest, IsAFailureWhereNoneCanBeMade) {
  chmod(base.path().c_str(), 0555);
  EXPECT_EQ(reportOfChild([&] {
              if (geteuid() == 0 && setuid(12345) != 0) throw std::runtime_error("no setuid");
              return manager->temporaryDirectory().path();
            }),
            "error " + std::to_string(EACCES));
}

class UnusableTemporaryFolder : public testing::TestWithParam<const char*> {};

TEST_P(UnusableTemporaryFolder, IsReplacedByTheSystems) {
  const EnvironmentGuard environment("TMPDIR", GetParam());
  const std::string systems = "/tmp/kestrivane-" + std::to_string(geteuid());
  const bool wasThere = std::filesystem::exists(std::filesystem::symlink_status(systems));
  LinuxFileManager manager;
  EXPECT_TRUE(manager.temporaryDirectory().path().starts_with(systems));
  if (!wasThere) rmdir(systems.c_str());
}

INSTANTIATE_TEST_SUITE_P(Values, UnusableTemporaryFolder,
                         testing::Values("", "relative", "/nowhere/at/all", "/etc/passwd"));

}  // namespace
}  // namespace kestrivane::test

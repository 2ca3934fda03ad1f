// Moving on file systems that know neither the flag for it nor hard links, and across them.

#include <cerrno>
#include <cstdio>
#include <functional>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/system/LinuxFileManager.hpp"
#include "tests/platform/system/ChildProcess.hpp"
#include "tests/platform/system/SystemCallFilter.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

using Names = std::set<std::string>;

struct FileSystem {
  const char* name;
  void (*restrict)();
};

void withoutTheFlag() {
  refuseSystemCall(SYS_renameat2, 4, RENAME_NOREPLACE, EINVAL);
}

void withoutTheFlagAndLinks() {
  withoutTheFlag();
  refuseSystemCall(SYS_link, EPERM);
  refuseSystemCall(SYS_linkat, EPERM);
}

class MoveItem : public testing::TestWithParam<FileSystem> {
 protected:
  TemporaryFolder folder;
  LinuxFileManager manager;

  std::string reportOfMoving(const FileURL& source, const FileURL& destination) {
    return reportOfChild([&] {
      GetParam().restrict();
      manager.moveItem(source, destination);
      return std::string("moved");
    });
  }

  std::string error(int code) { return "error " + std::to_string(code); }
};

TEST_P(MoveItem, MovesAFile) {
  folder.write("a.jpg", "photo");
  EXPECT_EQ(reportOfMoving(folder.url("a.jpg"), folder.url("a.png")), "moved");
  EXPECT_EQ(contentOf(folder.url("a.png")), "photo");
  EXPECT_EQ(folder.names(), Names{"a.png"});
}

TEST_P(MoveItem, MovesAFolder) {
  mkdir(folder.url("x.jpg").path().c_str(), 0755);
  folder.write("x.jpg/inside", "photo");
  EXPECT_EQ(reportOfMoving(folder.url("x.jpg"), folder.url("x.png")), "moved");
  EXPECT_EQ(contentOf(folder.url("x.png/inside")), "photo");
  EXPECT_EQ(folder.names(), Names{"x.png"});
}

TEST_P(MoveItem, MovesASymbolicLinkItself) {
  ASSERT_EQ(symlink("nowhere", folder.url("a.jpg").path().c_str()), 0);
  EXPECT_EQ(reportOfMoving(folder.url("a.jpg"), folder.url("a.png")), "moved");
  struct stat status;
  ASSERT_EQ(lstat(folder.url("a.png").path().c_str(), &status), 0);
  EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST_P(MoveItem, NeverOverwritesAFile) {
  folder.write("a.jpg", "photo");
  folder.write("a.png", "another");
  EXPECT_EQ(reportOfMoving(folder.url("a.jpg"), folder.url("a.png")), error(EEXIST));
  EXPECT_EQ(contentOf(folder.url("a.jpg")), "photo");
  EXPECT_EQ(contentOf(folder.url("a.png")), "another");
}

TEST_P(MoveItem, NeverOverwritesAnEmptyFolder) {
  mkdir(folder.url("x.jpg").path().c_str(), 0755);
  mkdir(folder.url("x.png").path().c_str(), 0755);
  EXPECT_EQ(reportOfMoving(folder.url("x.jpg"), folder.url("x.png")), error(EEXIST));
  EXPECT_EQ(folder.names(), (Names{"x.jpg", "x.png"}));
}

TEST_P(MoveItem, NeverOverwritesALinkThatLeadsNowhere) {
  folder.write("a.jpg", "photo");
  ASSERT_EQ(symlink("nowhere", folder.url("a.png").path().c_str()), 0);
  EXPECT_EQ(reportOfMoving(folder.url("a.jpg"), folder.url("a.png")), error(EEXIST));
  EXPECT_EQ(folder.names(), (Names{"a.jpg", "a.png"}));
}

TEST_P(MoveItem, LeavesNothingWhenThereIsNothingToMove) {
  EXPECT_EQ(reportOfMoving(folder.url("a.jpg"), folder.url("a.png")), error(ENOENT));
  EXPECT_EQ(folder.names(), Names{});
}

TEST_P(MoveItem, DoesNotMoveToAnotherFileSystem) {
  const TemporaryFolder elsewhere("/dev/shm");
  folder.write("a.jpg", "photo");
  EXPECT_EQ(reportOfMoving(folder.url("a.jpg"), elsewhere.url("a.png")), error(EXDEV));
  EXPECT_EQ(contentOf(folder.url("a.jpg")), "photo");
  EXPECT_EQ(elsewhere.names(), Names{});
}

INSTANTIATE_TEST_SUITE_P(On, MoveItem,
                         testing::Values(FileSystem{"AnOrdinaryFileSystem", [] {}},
                                         FileSystem{"OneWithoutTheFlag", withoutTheFlag},
                                         FileSystem{"OneWithoutTheFlagAndLinks",
                                                    withoutTheFlagAndLinks}),
                         [](const auto& system) { return std::string(system.param.name); });

}  // namespace
}  // namespace kestrivane::test

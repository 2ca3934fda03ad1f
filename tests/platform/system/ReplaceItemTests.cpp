// What replacing a file keeps, and what it leaves when it cannot be done.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/system/LinuxFileManager.hpp"
#include "tests/platform/system/ChildProcess.hpp"
#include "tests/platform/system/FlushHook.hpp"
#include "tests/platform/system/MountNamespace.hpp"
#include "tests/platform/system/SystemCallFilter.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

using Names = std::set<std::string>;

/// An access control list as the kernel stores it (linux/posix_acl_xattr.h): the owner rw, the user
/// 12345 r, the group r, the mask r, others nothing.
const std::string accessList(
    "\x02\x00\x00\x00"
    "\x01\x00\x06\x00\xff\xff\xff\xff"
    "\x02\x00\x04\x00\x39\x30\x00\x00"
    "\x04\x00\x04\x00\xff\xff\xff\xff"
    "\x10\x00\x04\x00\xff\xff\xff\xff"
    "\x20\x00\x00\x00\xff\xff\xff\xff",
    44);

std::string attributeOf(const FileURL& url, const char* name) {
  std::string value(1024, '\0');
  const ssize_t length = getxattr(url.path().c_str(), name, value.data(), value.size());
  if (length < 0) return "(none)";
  value.resize(static_cast<std::size_t>(length));
  return value;
}

bool setAttribute(const FileURL& url, const char* name, const std::string& value) {
  return setxattr(url.path().c_str(), name, value.data(), value.size(), 0) == 0;
}

struct stat statusOf(const FileURL& url) {
  struct stat status {};
  EXPECT_EQ(lstat(url.path().c_str(), &status), 0) << url.path();
  return status;
}

/// Where the replacement lies: beside the original's folder or on another file system.
struct Place {
  const char* name;
  const char* base;
};

class ReplaceItem : public testing::TestWithParam<Place> {
 protected:
  void SetUp() override {
    const bool isElsewhere =
        statusOf(FileURL(folder.path())).st_dev != statusOf(FileURL(other.path())).st_dev;
    ASSERT_EQ(isElsewhere, std::string(GetParam().name) == "AnotherFileSystem");
  }

  TemporaryFolder folder{"/var/tmp"};
  TemporaryFolder other{GetParam().base};
  LinuxFileManager manager;
  FileURL original = folder.write("a.jpg", "old");
  FileURL replacement = other.write("new", "new content");

  void replace() { manager.replaceItem(original, replacement, manager.versionOfItem(original)); }

  int codeOfReplacing() {
    try {
      replace();
    } catch (const PlatformError& error) {
      return error.code();
    }
    return 0;
  }

  void expectReplaced(const Names& names = {"a.jpg"}) {
    EXPECT_EQ(contentOf(original), "new content");
    EXPECT_EQ(folder.names(), names);
    EXPECT_EQ(other.names(), Names{});
  }

  void expectUntouched() {
    EXPECT_EQ(contentOf(original), "old");
    EXPECT_EQ(contentOf(replacement), "new content");
    EXPECT_EQ(folder.names(), Names{"a.jpg"});
  }

  /// Replaces in a child process after `restrict` has made something impossible for it.
  std::string reportOfReplacing(const std::function<void()>& restrict) {
    return reportOfChild([&] {
      restrict();
      replace();
      return std::string("replaced");
    });
  }
};

TEST_P(ReplaceItem, LeavesNothingButTheNewFile) {
  replace();
  expectReplaced();
}

TEST_P(ReplaceItem, PutsALargeFileInPlaceByteForByte) {
  std::string content;
  for (int i = 0; i < 300'000; ++i)
    content += std::to_string(i);
  other.write("new", content);
  replace();
  EXPECT_TRUE(contentOf(original) == content);
}

TEST_P(ReplaceItem, PutsAnEmptyFileInPlace) {
  other.write("new", "");
  replace();
  EXPECT_EQ(contentOf(original), "");
}

TEST_P(ReplaceItem, KeepsThePermissions) {
  for (const mode_t mode : {0600U, 0644U, 0664U, 0755U, 0444U}) {
    original = folder.write("a.jpg", "old");
    replacement = other.write("new", "new content");
    chmod(original.path().c_str(), mode);
    chmod(replacement.path().c_str(), 0640);
    replace();
    EXPECT_EQ(statusOf(original).st_mode & 07777, mode);
    expectReplaced();
    unlink(original.path().c_str());
  }
}

TEST_P(ReplaceItem, DropsTheSetUserIDBitAsWritingWould) {
  chmod(original.path().c_str(), 04755);
  replace();
  EXPECT_EQ(statusOf(original).st_mode & 07777, 0755U);
}

TEST_P(ReplaceItem, KeepsTheOwnerAndGroupWherePermitted) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  ASSERT_EQ(chown(original.path().c_str(), 12345, 23456), 0);
  replace();
  EXPECT_EQ(statusOf(original).st_uid, 12345U);
  EXPECT_EQ(statusOf(original).st_gid, 23456U);
}

TEST_P(ReplaceItem, TakesTheFileOverWhereTheOwnerCannotBeKept) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make a file of somebody else's";
  for (const std::string& path : {folder.path(), other.path()})
    ASSERT_EQ(chown(path.c_str(), 12345, 12345), 0);
  ASSERT_EQ(chown(replacement.path().c_str(), 12345, 12345), 0);
  ASSERT_EQ(chown(original.path().c_str(), 23456, 23456), 0);
  EXPECT_EQ(reportOfReplacing([] {
              if (setgid(12345) != 0 || setuid(12345) != 0) throw std::runtime_error("no setuid");
            }),
            "replaced");
  expectReplaced();
  EXPECT_EQ(statusOf(original).st_uid, 12345U);
  EXPECT_EQ(statusOf(original).st_mode & 07777, 0644U);
}

TEST_P(ReplaceItem, KeepsExtendedAttributesAndDropsThoseOfTheReplacement) {
  ASSERT_TRUE(setAttribute(original, "user.comment", std::string("a\0b", 3)));
  ASSERT_TRUE(setAttribute(original, "user.empty", ""));
  replace();
  EXPECT_EQ(attributeOf(original, "user.comment"), std::string("a\0b", 3));
  EXPECT_EQ(attributeOf(original, "user.empty"), "");
  expectReplaced();
}

TEST_P(ReplaceItem, KeepsTheAccessControlList) {
  ASSERT_TRUE(setAttribute(original, "system.posix_acl_access", accessList));
  replace();
  EXPECT_EQ(attributeOf(original, "system.posix_acl_access"), accessList);
  EXPECT_EQ(statusOf(original).st_mode & 0777, 0640U);
}

TEST_P(ReplaceItem, DoesNotTakeOnTheFoldersDefaultAccessControlList) {
  ASSERT_TRUE(setAttribute(FileURL(folder.path()), "system.posix_acl_default", accessList));
  replace();
  EXPECT_EQ(attributeOf(original, "system.posix_acl_access"), "(none)");
  EXPECT_EQ(statusOf(original).st_mode & 0777, 0644U);
}

TEST_P(ReplaceItem, LeavesOtherHardLinksWithTheOldContent) {
  ASSERT_EQ(link(original.path().c_str(), folder.url("b.jpg").path().c_str()), 0);
  replace();
  expectReplaced({"a.jpg", "b.jpg"});
  EXPECT_EQ(contentOf(folder.url("b.jpg")), "old");
}

TEST_P(ReplaceItem, ReplacesASymbolicLinkAndSparesTheFileBehindIt) {
  const FileURL target = folder.write("archive.png", "the only copy");
  chmod(target.path().c_str(), 0600);
  unlink(original.path().c_str());
  ASSERT_EQ(symlink("archive.png", original.path().c_str()), 0);
  replace();
  EXPECT_TRUE(S_ISREG(statusOf(original).st_mode));
  EXPECT_EQ(statusOf(original).st_mode & 07777, 0600U);
  EXPECT_EQ(contentOf(target), "the only copy");
  expectReplaced({"a.jpg", "archive.png"});
}

TEST_P(ReplaceItem, RefusesAFolder) {
  unlink(original.path().c_str());
  ASSERT_EQ(mkdir(original.path().c_str(), 0700), 0);
  EXPECT_EQ(codeOfReplacing(), EISDIR);
  EXPECT_TRUE(S_ISDIR(statusOf(original).st_mode));
  EXPECT_EQ(contentOf(replacement), "new content");
}

TEST_P(ReplaceItem, RefusesAPipeWithoutWaitingForAWriter) {
  unlink(original.path().c_str());
  ASSERT_EQ(mkfifo(original.path().c_str(), 0600), 0);
  EXPECT_EQ(codeOfReplacing(), EOPNOTSUPP);
}

TEST_P(ReplaceItem, RefusesAReplacementThatIsALink) {
  other.write("elsewhere", "somebody else's");
  unlink(replacement.path().c_str());
  ASSERT_EQ(symlink("elsewhere", replacement.path().c_str()), 0);
  EXPECT_EQ(codeOfReplacing(), ELOOP);
  EXPECT_EQ(contentOf(original), "old");
}

TEST_P(ReplaceItem, WorksWithEveryNameThatAFileCanHave) {
  for (const std::string& name :
       {std::string("\xff\xfe.jpg"), std::string("line\nfeed.jpg"), std::string("it's -> b.jpg"),
        std::string(251, 'x') + ".jpg", std::string(".jpg"), std::string("-rf")}) {
    replacement = other.write("new", "new content");
    original = folder.write(name, "old");
    replace();
    EXPECT_EQ(contentOf(original), "new content") << name;
    unlink(original.path().c_str());
  }
  EXPECT_EQ(folder.names(), Names{"a.jpg"});
}

TEST_P(ReplaceItem, WorksWhereNamesCannotBeExchanged) {
  EXPECT_EQ(reportOfReplacing([] { refuseSystemCall(SYS_renameat2, 4, RENAME_EXCHANGE, EINVAL); }),
            "replaced");
  expectReplaced();
}

TEST_P(ReplaceItem, WorksWithoutHardLinksAndFilesWithoutName) {
  chmod(original.path().c_str(), 0640);
  EXPECT_EQ(reportOfReplacing([] {
              refuseSystemCall(SYS_linkat, EPERM);
              refuseSystemCall(SYS_openat, 2, O_TMPFILE & ~O_DIRECTORY, EOPNOTSUPP);
            }),
            "replaced");
  expectReplaced();
  EXPECT_EQ(statusOf(original).st_mode & 07777, 0640U);
}

TEST_P(ReplaceItem, WorksWhereAttributesCannotBeKept) {
  for (const int refusal : {EPERM, EOPNOTSUPP, ENOSYS, EINVAL}) {
    for (const long call : {SYS_fchmod, SYS_fchown, SYS_flistxattr, SYS_fremovexattr}) {
      EXPECT_EQ(reportOfReplacing([&] { refuseSystemCall(call, refusal); }), "replaced")
          << call << ' ' << refusal;
      expectReplaced();
      folder.write("a.jpg", "old");
      other.write("new", "new content");
    }
  }
  EXPECT_EQ(reportOfReplacing([] { refuseSystemCall(SYS_fchmod, EIO); }),
            "error " + std::to_string(EIO));
}

TEST_P(ReplaceItem, LeavesBothFilesWhenTheDataCannotBeFlushed) {
  const FlushHook hook([](int) { return EIO; });
  EXPECT_EQ(codeOfReplacing(), EIO);
  expectUntouched();
}

TEST_P(ReplaceItem, LeavesBothFilesWhenTheFolderCannotBeFlushed) {
  const FlushHook hook([](int flush) { return flush == 2 ? EIO : 0; });
  EXPECT_EQ(codeOfReplacing(), EIO);
  expectUntouched();
}

TEST_P(ReplaceItem, DoesWithoutFlushingAFolderThatCannotBeFlushedAtAll) {
  const FlushHook hook([](int flush) { return flush == 2 ? EINVAL : 0; });
  EXPECT_EQ(codeOfReplacing(), 0);
  expectReplaced();
}

TEST_P(ReplaceItem, LeavesBothFilesWhenTheFolderIsReadOnly) {
  chmod(folder.path().c_str(), 0555);
  ASSERT_EQ(chown(other.path().c_str(), 12345, 12345), geteuid() == 0 ? 0 : -1);
  EXPECT_EQ(reportOfReplacing([] {
              if (geteuid() == 0 && setuid(12345) != 0) throw std::runtime_error("no setuid");
            }),
            "error " + std::to_string(EACCES));
  expectUntouched();
}

INSTANTIATE_TEST_SUITE_P(From, ReplaceItem,
                         testing::Values(Place{"SameFileSystem", "/var/tmp"},
                                         Place{"AnotherFileSystem", "/dev/shm"}),
                         [](const auto& place) { return std::string(place.param.name); });

class ReplaceItemByCopy : public ReplaceItem {
 protected:
  void TearDown() override {
    // Whatever happened, nothing but the two files may be left.
    EXPECT_EQ(folder.names(), Names{"a.jpg"});
  }
};

TEST_P(ReplaceItemByCopy, CopiesByHandWhereTheKernelDoesNot) {
  EXPECT_EQ(reportOfReplacing([] { refuseSystemCall(SYS_copy_file_range, EXDEV); }), "replaced");
  expectReplaced();
}

TEST_P(ReplaceItemByCopy, LeavesBothFilesAtTheLimitForFiles) {
  EXPECT_EQ(reportOfReplacing([] {
              signal(SIGXFSZ, SIG_IGN);
              const rlimit limit{5, 5};
              setrlimit(RLIMIT_FSIZE, &limit);
            }),
            "error " + std::to_string(EFBIG));
  expectUntouched();
}

TEST_P(ReplaceItemByCopy, LeavesBothFilesWhenTheDiskIsFull) {
  other.write("new", std::string(1'000'000, 'n'));
  const std::string report = reportOfChild([&]() -> std::string {
    if (!enterMountNamespace() || !mountMemory(folder.path(), "size=64k")) return "no mount";
    folder.write("a.jpg", "old");
    try {
      replace();
    } catch (const PlatformError& error) {
      if (error.code() != ENOSPC) throw;
      return contentOf(original) + " alone: " + std::to_string(folder.names().size());
    }
    return "replaced";
  });
  if (report == "no mount") GTEST_SKIP() << "this user may not mount";
  EXPECT_EQ(report, "old alone: 1");
  EXPECT_EQ(contentOf(replacement).size(), 1'000'000U);
}

INSTANTIATE_TEST_SUITE_P(From, ReplaceItemByCopy,
                         testing::Values(Place{"AnotherFileSystem", "/dev/shm"}),
                         [](const auto& place) { return std::string(place.param.name); });

}  // namespace
}  // namespace kestrivane::test

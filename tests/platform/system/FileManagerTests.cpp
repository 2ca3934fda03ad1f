// What every `FileManager` does: the one of the system and the one that the unit tests use.

#include <cerrno>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/system/LinuxFileManager.hpp"
#include "tests/platform/system/ChildProcess.hpp"
#include "tests/platform/system/EnvironmentGuard.hpp"
#include "tests/platform/system/MountNamespace.hpp"
#include "tests/support/InMemoryFileSystem.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

/// A file manager with a folder, and another program's view of that folder.
class FileManagerSubject {
 public:
  FileManagerSubject() = default;
  FileManagerSubject(const FileManagerSubject&) = delete;
  FileManagerSubject& operator=(const FileManagerSubject&) = delete;
  virtual ~FileManagerSubject() = default;
  virtual FileManager& manager() = 0;
  virtual FileURL url(const std::string& name) = 0;
  virtual void write(const std::string& name, const std::string& content) = 0;
  virtual void makeFolder(const std::string& name) = 0;
  virtual std::string content(const std::string& name) = 0;
};

class LinuxFileManagerSubject final : public FileManagerSubject {
 public:
  FileManager& manager() override { return manager_; }
  FileURL url(const std::string& name) override { return folder_.url(name); }
  void write(const std::string& name, const std::string& content) override {
    folder_.write(name, content);
  }
  void makeFolder(const std::string& name) override {
    std::filesystem::create_directory(folder_.url(name).path());
  }
  std::string content(const std::string& name) override { return contentOf(folder_.url(name)); }

 private:
  TemporaryFolder folder_;
  TemporaryFolder temporary_;
  EnvironmentGuard environment_{"TMPDIR", temporary_.path()};
  LinuxFileManager manager_;
};

class InMemoryFileManagerSubject final : public FileManagerSubject {
 public:
  InMemoryFileManagerSubject() { files_.createDirectory("/w"); }
  FileManager& manager() override { return files_; }
  FileURL url(const std::string& name) override { return FileURL("/w/" + name); }
  void write(const std::string& name, const std::string& content) override {
    files_.writeFile("/w/" + name, content);
  }
  void makeFolder(const std::string& name) override { files_.createDirectory("/w/" + name); }
  std::string content(const std::string& name) override {
    return files_.content("/w/" + name).value_or("(none)");
  }

 private:
  InMemoryFileSystem files_;
};

using FileManagerFactory = std::function<std::unique_ptr<FileManagerSubject>()>;

class FileManagerConformance : public testing::TestWithParam<FileManagerFactory> {
 protected:
  const std::unique_ptr<FileManagerSubject> subject = GetParam()();
  FileManager& manager = subject->manager();

  void replace(const std::string& original, const std::string& replacement) {
    const FileURL url = subject->url(original);
    manager.replaceItem(url, subject->url(replacement), manager.versionOfItem(url));
  }

  int codeOf(const std::function<void()>& operation) {
    try {
      operation();
    } catch (const PlatformError& error) {
      EXPECT_FALSE(error.localizedDescription().empty());
      return error.code();
    }
    return 0;
  }
};

TEST_P(FileManagerConformance, TellsFilesFoldersAndNothingApart) {
  subject->write("a.png", "old");
  subject->makeFolder("b.png");
  EXPECT_EQ(manager.kindOfItem(subject->url("a.png")), ItemKind::file);
  EXPECT_EQ(manager.kindOfItem(subject->url("b.png")), ItemKind::directory);
  EXPECT_EQ(manager.kindOfItem(subject->url("c.png")), ItemKind::none);
}

TEST_P(FileManagerConformance, MovesAFileToAnotherName) {
  subject->write("a.jpg", "photo");
  manager.moveItem(subject->url("a.jpg"), subject->url("a.png"));
  EXPECT_EQ(subject->content("a.jpg"), "(none)");
  EXPECT_EQ(subject->content("a.png"), "photo");
}

TEST_P(FileManagerConformance, MovesAFolderWithWhatIsInIt) {
  subject->makeFolder("x.jpg");
  subject->write("x.jpg/a.png", "photo");
  manager.moveItem(subject->url("x.jpg"), subject->url("x.png"));
  EXPECT_EQ(subject->content("x.png/a.png"), "photo");
  EXPECT_EQ(manager.kindOfItem(subject->url("x.jpg")), ItemKind::none);
}

TEST_P(FileManagerConformance, NeverMovesOntoAnotherFile) {
  subject->write("a.jpg", "photo");
  subject->write("a.png", "another");
  EXPECT_EQ(codeOf([&] { manager.moveItem(subject->url("a.jpg"), subject->url("a.png")); }),
            EEXIST);
  EXPECT_EQ(subject->content("a.jpg"), "photo");
  EXPECT_EQ(subject->content("a.png"), "another");
}

TEST_P(FileManagerConformance, NeverMovesOntoAFolder) {
  subject->write("a.jpg", "photo");
  subject->makeFolder("a.png");
  EXPECT_EQ(codeOf([&] { manager.moveItem(subject->url("a.jpg"), subject->url("a.png")); }),
            EEXIST);
  EXPECT_EQ(subject->content("a.jpg"), "photo");
  EXPECT_EQ(manager.kindOfItem(subject->url("a.png")), ItemKind::directory);
}

TEST_P(FileManagerConformance, FailsToMoveWhatIsNotThere) {
  EXPECT_EQ(codeOf([&] { manager.moveItem(subject->url("a.jpg"), subject->url("a.png")); }),
            ENOENT);
  EXPECT_EQ(manager.kindOfItem(subject->url("a.png")), ItemKind::none);
}

TEST_P(FileManagerConformance, ReplacesAFileAndConsumesTheReplacement) {
  subject->write("a.jpg", "old");
  subject->write("new", "new content");
  replace("a.jpg", "new");
  EXPECT_EQ(subject->content("a.jpg"), "new content");
  EXPECT_EQ(subject->content("new"), "(none)");
}

TEST_P(FileManagerConformance, FailsToReplaceWhatIsNotThereAndCreatesNothing) {
  subject->write("new", "new content");
  EXPECT_EQ(codeOf([&] { replace("a.jpg", "new"); }), ENOENT);
  EXPECT_EQ(subject->content("a.jpg"), "(none)");
  EXPECT_EQ(subject->content("new"), "new content");
}

TEST_P(FileManagerConformance, FailsToReplaceWhatWasWrittenToSinceItsVersionWasTaken) {
  subject->write("a.jpg", "old");
  subject->write("new", "new content");
  const FileURL original = subject->url("a.jpg");
  const FileVersion version = manager.versionOfItem(original);
  subject->write("a.jpg", "edited");
  EXPECT_NE(manager.versionOfItem(original), version);
  EXPECT_EQ(codeOf([&] { manager.replaceItem(original, subject->url("new"), version); }), ESTALE);
  EXPECT_EQ(subject->content("a.jpg"), "edited");
  EXPECT_EQ(subject->content("new"), "new content");
}

TEST_P(FileManagerConformance, HasNoVersionOfWhatIsNotThere) {
  EXPECT_EQ(manager.versionOfItem(subject->url("a.jpg")), FileVersion{});
}

TEST_P(FileManagerConformance, FailsToReplaceByWhatIsNotThereAndKeepsTheOriginal) {
  subject->write("a.jpg", "old");
  EXPECT_EQ(codeOf([&] { replace("a.jpg", "new"); }), ENOENT);
  EXPECT_EQ(subject->content("a.jpg"), "old");
}

TEST_P(FileManagerConformance, HasATemporaryFolderThatStays) {
  const FileURL folder = manager.temporaryDirectory();
  EXPECT_EQ(manager.kindOfItem(folder), ItemKind::directory);
  EXPECT_EQ(manager.temporaryDirectory(), folder);
}

TEST_P(FileManagerConformance, TellsThatAFolderHasRoom) {
  subject->makeFolder("folder");
  EXPECT_TRUE(manager.hasRoom(subject->url("folder")));
}

INSTANTIATE_TEST_SUITE_P(Linux, FileManagerConformance, testing::Values([] {
                           return std::make_unique<LinuxFileManagerSubject>();
                         }));
INSTANTIATE_TEST_SUITE_P(InMemory, FileManagerConformance, testing::Values([] {
                           return std::make_unique<InMemoryFileManagerSubject>();
                         }));

TEST(LinuxFileManager, ResolvesLinksAndDots) {
  const TemporaryFolder folder;
  const FileURL plain(std::filesystem::canonical(folder.path()).native());
  std::filesystem::create_directory(folder.url("real").path());
  std::filesystem::create_directory_symlink("real", folder.url("link").path());
  const LinuxFileManager manager;
  for (const char* const name : {"real", "real/", "link", "link/", "./link/../real/."}) {
    EXPECT_EQ(manager.resolvingSymbolicLinks(folder.url(name)),
              plain.appendingPathComponent("real"))
        << name;
  }
  EXPECT_EQ(manager.resolvingSymbolicLinks(folder.url("nowhere")), folder.url("nowhere"));
}

TEST(LinuxFileManager, TellsThatADiskIsFull) {
  const TemporaryFolder folder;
  const std::string report = reportOfChild([&folder] {
    if (!enterMountNamespace() || !mountMemory(folder.path(), "size=2m"))
      return std::string("skip");
    const LinuxFileManager manager;
    const FileURL url(folder.path());
    std::string result = manager.hasRoom(url) ? "room" : "full";
    folder.write("ballast", std::string(1'500'000, '-'));
    result += manager.hasRoom(url) ? ", room" : ", full";
    result += ", " + std::to_string(folder.names().size()) + " file";
    return result;
  });
  if (report == "skip") GTEST_SKIP() << "no file system may be mounted here";
  EXPECT_EQ(report, "room, full, 1 file");
}

}  // namespace
}  // namespace kestrivane::test

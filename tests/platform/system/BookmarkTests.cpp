// Bookmarks of folders: what all of them do, and what those of the system say.

#include <cerrno>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/system/FolderBookmark.hpp"
#include "platform/linux/system/LinuxSecurityScopedBookmarks.hpp"
#include "tests/platform/system/ChildProcess.hpp"
#include "tests/platform/system/EnvironmentGuard.hpp"
#include "tests/support/FakeBookmarks.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

namespace fs = std::filesystem;

/// Bookmarks, and another program's view of the place that they lead to.
class BookmarkSubject {
 public:
  BookmarkSubject() = default;
  BookmarkSubject(const BookmarkSubject&) = delete;
  BookmarkSubject& operator=(const BookmarkSubject&) = delete;
  virtual ~BookmarkSubject() = default;
  virtual SecurityScopedBookmarks& bookmarks() = 0;
  virtual Data bookmarkOfAnEarlierRun(const std::string& name) = 0;
  virtual FileURL url(const std::string& name) = 0;
  virtual void makeFolder(const std::string& name) = 0;
  virtual void makeFile(const std::string& name) = 0;
  virtual void remove(const std::string& name) = 0;
  virtual void replaceFolder(const std::string& name) = 0;
};

class LinuxBookmarkSubject final : public BookmarkSubject {
 public:
  SecurityScopedBookmarks& bookmarks() override { return bookmarks_; }
  Data bookmarkOfAnEarlierRun(const std::string& name) override {
    return LinuxSecurityScopedBookmarks().bookmarkData(url(name));
  }
  FileURL url(const std::string& name) override { return folder_.url(name); }
  void makeFolder(const std::string& name) override { fs::create_directory(url(name).path()); }
  void makeFile(const std::string& name) override { folder_.write(name, "content"); }
  void remove(const std::string& name) override { fs::remove(url(name).path()); }
  void replaceFolder(const std::string& name) override {
    // The old one stays for a while: the new one cannot have its inode number.
    makeFolder("new");
    fs::rename(url(name).path(), url("old").path());
    fs::rename(url("new").path(), url(name).path());
    remove("old");
  }

 private:
  TemporaryFolder folder_;
  LinuxSecurityScopedBookmarks bookmarks_;
};

class FakeBookmarkSubject final : public BookmarkSubject {
 public:
  FakeBookmarkSubject() { files_.createDirectory("/w"); }
  SecurityScopedBookmarks& bookmarks() override { return bookmarks_; }
  Data bookmarkOfAnEarlierRun(const std::string& name) override {
    return FakeBookmarks::of(url(name).path());
  }
  FileURL url(const std::string& name) override { return FileURL("/w/" + name); }
  void makeFolder(const std::string& name) override { files_.createDirectory("/w/" + name); }
  void makeFile(const std::string& name) override { files_.writeFile("/w/" + name, "content"); }
  void remove(const std::string& name) override { files_.remove("/w/" + name); }
  void replaceFolder(const std::string& name) override { bookmarks_.stale.insert("/w/" + name); }

 private:
  InMemoryFileSystem files_;
  FakeBookmarks bookmarks_{files_};
};

using BookmarkFactory = std::function<std::unique_ptr<BookmarkSubject>()>;

class BookmarkConformance : public testing::TestWithParam<BookmarkFactory> {
 protected:
  /// The code of the error; 0 if there is none.
  int failureOfResolving(const Data& bookmark) {
    try {
      bookmarks.resolve(bookmark);
      return 0;
    } catch (const PlatformError& error) {
      EXPECT_FALSE(error.localizedDescription().empty());
      return error.code();
    }
  }

  const std::unique_ptr<BookmarkSubject> subject = GetParam()();
  SecurityScopedBookmarks& bookmarks = subject->bookmarks();
};

TEST_P(BookmarkConformance, LeadBackToTheFolder) {
  subject->makeFolder("photos");
  const Data bookmark = bookmarks.bookmarkData(subject->url("photos"));
  const ResolvedBookmark resolved = bookmarks.resolve(bookmark);
  EXPECT_EQ(resolved.url, subject->url("photos"));
  EXPECT_FALSE(resolved.isStale);
}

TEST_P(BookmarkConformance, CanOnlyBeMadeOfFolders) {
  subject->makeFile("file");
  EXPECT_THROW(bookmarks.bookmarkData(subject->url("file")), PlatformError);
  EXPECT_THROW(bookmarks.bookmarkData(subject->url("nowhere")), PlatformError);
}

TEST_P(BookmarkConformance, LeadNowhereOnceTheFolderIsGoneOrAFile) {
  subject->makeFolder("photos");
  const Data bookmark = bookmarks.bookmarkData(subject->url("photos"));
  subject->remove("photos");
  EXPECT_EQ(failureOfResolving(bookmark), ENOENT);
  subject->makeFile("photos");
  EXPECT_EQ(failureOfResolving(bookmark), ENOTDIR);
  EXPECT_FALSE(bookmarks.startAccessing(subject->url("photos")));
}

TEST_P(BookmarkConformance, AreStaleOnceAnotherFolderIsAtThePlace) {
  subject->makeFolder("photos");
  const Data bookmark = bookmarks.bookmarkData(subject->url("photos"));
  subject->replaceFolder("photos");
  const ResolvedBookmark resolved = bookmarks.resolve(bookmark);
  EXPECT_EQ(resolved.url, subject->url("photos"));
  EXPECT_TRUE(resolved.isStale);
}

TEST_P(BookmarkConformance, NameThePlaceOfAFolderThatIsNoLongerThere) {
  subject->makeFolder("photos");
  const Data bookmark = bookmarks.bookmarkData(subject->url("photos"));
  EXPECT_EQ(bookmarks.placeOf(bookmark), subject->url("photos"));
  subject->remove("photos");
  EXPECT_EQ(bookmarks.placeOf(bookmark), subject->url("photos"));
  EXPECT_EQ(bookmarks.placeOf(dataOf("damaged")), std::nullopt);
}

TEST_P(BookmarkConformance, OfAFolderThatIsAwayIsTheOneThatWasLastMadeOfIt) {
  subject->makeFolder("photos");
  const Data bookmark = bookmarks.bookmarkData(subject->url("photos"));
  subject->remove("photos");
  EXPECT_EQ(bookmarks.bookmarkData(subject->url("photos")), bookmark);
}

TEST_P(BookmarkConformance, OfAFolderThatIsAwayIsTheOneThatHasLedToIt) {
  subject->makeFolder("photos");
  const Data bookmark = subject->bookmarkOfAnEarlierRun("photos");
  EXPECT_EQ(bookmarks.resolve(bookmark).url, subject->url("photos"));
  subject->remove("photos");
  EXPECT_EQ(bookmarks.bookmarkData(subject->url("photos")), bookmark);
}

TEST_P(BookmarkConformance, FailToResolveWhenTheyAreDamaged) {
  EXPECT_EQ(failureOfResolving({}), EBADMSG);
  EXPECT_EQ(failureOfResolving(dataOf("something else altogether, and rather long at that")),
            EBADMSG);
}

TEST_P(BookmarkConformance, GrantAccessToAFolder) {
  subject->makeFolder("photos");
  EXPECT_TRUE(bookmarks.startAccessing(subject->url("photos")));
  bookmarks.stopAccessing(subject->url("photos"));
  EXPECT_FALSE(bookmarks.startAccessing(subject->url("nowhere")));
}

INSTANTIATE_TEST_SUITE_P(Linux, BookmarkConformance,
                         testing::Values([] { return std::make_unique<LinuxBookmarkSubject>(); }));
INSTANTIATE_TEST_SUITE_P(Fake, BookmarkConformance,
                         testing::Values([] { return std::make_unique<FakeBookmarkSubject>(); }));

TEST(LinuxBookmarks, SurviveARenameBackAndAChangeOfContent) {
  const TemporaryFolder folder;
  const FileURL photos = folder.url("photos");
  fs::create_directory(photos.path());
  const LinuxSecurityScopedBookmarks bookmarks;
  const Data bookmark = bookmarks.bookmarkData(photos);
  fs::rename(photos.path(), folder.url("elsewhere").path());
  EXPECT_THROW(bookmarks.resolve(bookmark), PlatformError);
  fs::rename(folder.url("elsewhere").path(), photos.path());
  folder.write("photos/a.png", "x");
  EXPECT_FALSE(bookmarks.resolve(bookmark).isStale);
}

TEST(LinuxBookmarks, KeepThePathThatTheFolderWasNamedBy) {
  const TemporaryFolder folder;
  const std::string odd = "bytes \xFF \n ё";
  fs::create_directory(folder.url(odd).path());
  fs::create_symlink(folder.url(odd).path(), folder.url("link").path());
  const LinuxSecurityScopedBookmarks bookmarks;
  for (const FileURL& url :
       {folder.url(odd), folder.url("link"), folder.url("link/"), FileURL("/")})
    EXPECT_EQ(bookmarks.resolve(bookmarks.bookmarkData(url)).url, url);
}

TEST(LinuxBookmarks, GrantNoAccessToAFolderThatCannotBeRead) {
  const TemporaryFolder folder;
  fs::create_directory(folder.url("closed").path());
  fs::permissions(folder.url("closed").path(), fs::perms::none);
  const std::string report = reportOfChild([&folder] {
    // An ordinary user, whoever runs the test.
    fs::permissions(folder.path(), fs::perms::all);
    constexpr uid_t nobody = 65534;
    if (geteuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0)) return "cannot be nobody";
    LinuxSecurityScopedBookmarks bookmarks;
    bookmarks.resolve(bookmarks.bookmarkData(folder.url("closed")));
    return bookmarks.startAccessing(folder.url("closed")) ? "granted" : "refused";
  });
  EXPECT_EQ(report, "refused");
}

TEST(LinuxBookmarks, SayInBothLanguagesWhyTheyFail) {
  const FileURL missing("/nowhere/photos");
  const Data bookmark = FolderBookmark{missing.path(), {}}.encode();
  const auto description = [](const Data& data) -> std::string {
    try {
      LinuxSecurityScopedBookmarks().resolve(data);
      return "(nothing)";
    } catch (const PlatformError& error) {
      return error.localizedDescription();
    }
  };
  {
    const EnvironmentGuard locale("LC_ALL", "en_GB.UTF-8");
    EXPECT_EQ(description(bookmark),
              "Could not find the folder 'photos': it is no longer there. It was renamed, moved or "
              "deleted meanwhile.");
    EXPECT_EQ(description({}), "The bookmark of a folder is damaged. Add the folder again.");
  }
  const EnvironmentGuard locale("LC_ALL", "ru_RU.UTF-8");
  EXPECT_EQ(description(bookmark),
            "Не удалось найти папку 'photos': объекта больше нет на месте. Его переименовали, "
            "переместили или удалили.");
  EXPECT_EQ(description({}), "Закладка папки повреждена. Добавьте папку заново.");
}

int failureOfDecoding(const Data& bytes) {
  try {
    FolderBookmark::decode(bytes);
    return 0;
  } catch (const PlatformError& error) {
    return error.code();
  }
}

TEST(FolderBookmark, ComeBackAsTheyWereEncoded) {
  const FolderBookmark born{"/w/photos",
                            {.fileSystem = 0x1122334455667788,
                             .inode = 0xFFFFFFFFFFFFFFFF,
                             .birth = BirthTime{-1, 999'999'999}}};
  const FolderBookmark unborn{"/", {}};
  for (const FolderBookmark& bookmark : {born, unborn})
    EXPECT_EQ(FolderBookmark::decode(bookmark.encode()), bookmark);
}

TEST(FolderBookmark, AreTheSameBytesOnEveryComputer) {
  const FolderBookmark bookmark{"/w", {.fileSystem = 1, .inode = 0x0203, .birth = BirthTime{4, 5}}};
  const Data bytes = bookmark.encode();
  const std::string expected(
      "KVBM\x01\0\0\0"
      "\x3A\x08\xD7\x6A\x7F\x97\xE3\x50"
      "\x01\0\0\0\0\0\0\0"
      "\x03\x02\0\0\0\0\0\0"
      "\x04\0\0\0\0\0\0\0"
      "\x05\0\0\0"
      "/w",
      46);
  EXPECT_EQ(textOf(bytes), expected);
}

TEST(FolderBookmark, AreRefusedWithAnyBitChangedOrAnyByteMissing) {
  const Data bytes = FolderBookmark{"/w/photos", {.fileSystem = 7, .inode = 8}}.encode();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (int bit = 0; bit < 8; ++bit) {
      Data changed = bytes;
      changed[i] ^= static_cast<std::byte>(1 << bit);
      // Bytes 4 to 7 are the version.
      const bool isLaterVersion = i >= 4 && i < 8 && !(i == 4 && bit == 0);
      EXPECT_EQ(failureOfDecoding(changed), isLaterVersion ? ENOTSUP : EBADMSG) << i << ' ' << bit;
    }
    EXPECT_EQ(failureOfDecoding(Data(bytes.begin(), bytes.begin() + static_cast<long>(i))),
              EBADMSG);
  }
}

TEST(FolderBookmark, AreRefusedWithAPathThatIsNone) {
  for (const std::string& path : {std::string(), std::string("relative"), std::string("/a\0b", 4)})
    EXPECT_EQ(failureOfDecoding(FolderBookmark{path, {}}.encode()), EBADMSG) << path;
  EXPECT_EQ(
      failureOfDecoding(FolderBookmark{"/w", {.birth = BirthTime{0, 1'000'000'000}}}.encode()),
      EBADMSG);
}

}  // namespace
}  // namespace kestrivane::test

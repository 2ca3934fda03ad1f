// The media adapter as the programs load it.
#include <cerrno>
#include <string>

#include <gtest/gtest.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/media/MediaModule.hpp"
#include "tests/platform/media/MediaTesting.hpp"
#include "tests/support/FakeBundle.hpp"

namespace kestrivane::mediaTesting {
namespace {

class MediaModuleTest : public testing::Test {
 protected:
  void install(const FileURL& file) {
    bundle_.auxiliaryExecutables.insert_or_assign(mediaModule::fileName, file);
  }

  void installTheBuiltOne() { install(FileURL(KESTRIVANE_MEDIA_MODULE)); }

  /// The code of the error of opening a film; 0 for none.
  int codeOfOpening() {
    try {
      open(sample("silent.mp4"));
      return 0;
    } catch (const PlatformError& error) {
      EXPECT_NE(error.localizedDescription(), "");
      return error.code();
    }
  }

  std::unique_ptr<OpenedMedia> open(const FileURL& url) { return mediaModule::open(bundle_, url); }

  bool isCutShort(const FileURL& result, const FileURL& source) {
    return mediaModule::isCutShort(bundle_, result, source);
  }

  const test::TemporaryFolder folder;

 private:
  test::FakeBundle bundle_;
};

TEST_F(MediaModuleTest, ExportsAFilm) {
  installTheBuiltOne();
  const auto film = open(sample("silent.mp4"));
  ASSERT_NE(film, nullptr);
  const FileURL result = folder.url("result.mov");
  film->exportTo(result, MediaFileType::quickTimeMovie);
  EXPECT_EQ(probe(result, "", "stream=codec_name"),
            probe(sample("silent.mp4"), "", "stream=codec_name"));
}

TEST_F(MediaModuleTest, HasNoFilmForWhatIsNone) {
  installTheBuiltOne();
  EXPECT_EQ(open(folder.write("text.mov", "Dear diary")), nullptr);
}

TEST_F(MediaModuleTest, HandsOnTheErrorsOfTheAdapter) {
  installTheBuiltOne();
  const auto film = open(sample("silent.mp4"));
  ASSERT_NE(film, nullptr);
  EXPECT_THROW(film->exportTo(folder.url("no such folder/a.mov"), MediaFileType::quickTimeMovie),
               PlatformError);
}

TEST_F(MediaModuleTest, ComparesFilms) {
  installTheBuiltOne();
  const FileURL half = folder.url("half.mp4");
  make("-i " + sample("silent.mp4").path() + " -t 0.3 " + half.path());
  EXPECT_FALSE(isCutShort(sample("silent.mp4"), half));
  EXPECT_TRUE(isCutShort(folder.write("none.mp4", ""), half));
}

TEST_F(MediaModuleTest, OneThatIsMissingIsAnError) {
  EXPECT_EQ(codeOfOpening(), ELIBACC);
}

TEST_F(MediaModuleTest, OneThatCannotBeLoadedIsAnErrorUntilItIsMended) {
  install(folder.write("broken.so", "no module"));
  EXPECT_EQ(codeOfOpening(), ELIBACC);
  installTheBuiltOne();
  EXPECT_EQ(codeOfOpening(), 0);
}

TEST_F(MediaModuleTest, OneOfAnotherVersionIsAnError) {
  install(FileURL(KESTRIVANE_REPLACED_MODULE));
  try {
    open(sample("silent.mp4"));
    FAIL() << "it was loaded";
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.code(), ELIBACC);
    EXPECT_NE(error.localizedDescription().find("Start Kestrivane again."), std::string::npos);
  }
}

TEST_F(MediaModuleTest, AnotherLibraryInItsPlaceIsAnError) {
  install(FileURL("libc.so.6"));
  EXPECT_EQ(codeOfOpening(), ELIBACC);
}

}  // namespace
}  // namespace kestrivane::mediaTesting

// What is no film, what is damaged, and what cannot be written.
#include <csignal>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/media/MediaExport.hpp"
#include "tests/platform/media/MediaTesting.hpp"

namespace kestrivane::mediaTesting {
namespace {

using enum MediaFileType;

constexpr const char* damaged = "Invalid data found when processing input";

class DamagedFilm : public testing::Test {
 protected:
  FileURL cutOff(const FileURL& film, double share) {
    const std::string bytes = test::contentOf(film);
    return exporting.folder.write(
        "cut",
        bytes.substr(0, static_cast<std::size_t>(static_cast<double>(bytes.size()) * share)));
  }

  void expectNothingLeft(const std::set<std::string>& before) {
    EXPECT_EQ(exporting.folder.names(), before);
  }

  Exporting exporting;
};

TEST_F(DamagedFilm, HasNoSessionWithoutSoundAndVideo) {
  const test::TemporaryFolder& folder = exporting.folder;
  EXPECT_FALSE(exporting.hasSession(folder.write("text.mov", "Dear diary\n")));
  EXPECT_FALSE(exporting.hasSession(folder.write("empty.mp4", "")));
  EXPECT_FALSE(exporting.hasSession(folder.url("missing.mp4")));
  EXPECT_FALSE(exporting.hasSession(FileURL(folder.path())));
  // Its table of contents stands at the end.
  EXPECT_FALSE(exporting.hasSession(cutOff(sample("telephone-h264.mov"), 0.6)));
  const FileURL pictures(KESTRIVANE_SAMPLES);
  for (const std::string picture : {"photo.jpg", "photo.png", "photo.heic", "animated.gif"})
    EXPECT_FALSE(exporting.hasSession(pictures.appendingPathComponent(picture))) << picture;
  const FileURL subtitles = folder.url("subtitles.mp4");
  make("-i " + sample("several.mp4").path() + " -map 0:s -c copy " + subtitles.path());
  EXPECT_FALSE(exporting.hasSession(subtitles));
}

TEST_F(DamagedFilm, NeverBlocksOnAPipe) {
  const FileURL pipe = exporting.folder.url("pipe.mov");
  ASSERT_EQ(::mkfifo(pipe.path().c_str(), 0600), 0);
  EXPECT_FALSE(exporting.hasSession(pipe));
}

TEST_F(DamagedFilm, NeverFollowsReferencesToOtherFiles) {
  const std::string film = sample("silent.mp4").path();
  const test::TemporaryFolder& folder = exporting.folder;
  EXPECT_FALSE(exporting.hasSession(folder.write(
      "list.mov", "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\n" + film + "\n#EXT-X-ENDLIST\n")));
  EXPECT_FALSE(exporting.hasSession(
      folder.write("list.mp4", "ffconcat version 1.0\nfile '" + film + "'\n")));
}

TEST_F(DamagedFilm, ThatIsCutOffFails) {
  const FileURL indexFirst = exporting.folder.url("index-first.mp4");
  make("-i " + sample("telephone-h264.mov").path() + " -c copy -movflags +faststart " +
       indexFirst.path());
  const FileURL matroska = exporting.folder.url("film.mkv");
  make("-i " + sample("telephone-h264.mov").path() + " -c copy " + matroska.path());
  const FileURL fragmented = exporting.folder.url("fragmented.mp4");
  make("-i " + sample("telephone-h264.mov").path() +
       " -c copy -movflags +frag_keyframe+empty_moov " + fragmented.path());
  for (const FileURL& film : {indexFirst, matroska, fragmented, sample("vp9.webm")}) {
    ASSERT_EQ(exporting.failureOf(film, quickTimeMovie), "no failure") << film.path();
    for (const double share : {0.99, 0.6}) {
      const FileURL cut = cutOff(film, share);
      const auto before = exporting.folder.names();
      EXPECT_EQ(exporting.failureOf(cut, quickTimeMovie), damaged) << film.path() << share;
      expectNothingLeft(before);
    }
  }
}

TEST_F(DamagedFilm, WithDamagedFramesFailsWhenTheyMustBeDecoded) {
  std::string bytes = test::contentOf(sample("prores.mov"));
  const auto place = std::stoul(probe(sample("prores.mov"), "v", "packet=pos").at(2));
  for (std::size_t i = place; i < place + 2000; ++i)
    bytes[i] = static_cast<char>(i * 7);
  const FileURL film = exporting.folder.write("damaged.mov", bytes);
  const auto before = exporting.folder.names();
  EXPECT_EQ(exporting.failureOf(film, mpeg4), damaged);
  expectNothingLeft(before);
}

/// Files cannot grow beyond this while it lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    ::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit{bytes, former_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &former_); }

 private:
  rlimit former_{};
};

TEST_F(DamagedFilm, ThatDoesNotFitFailsWithTheReasonOfTheSystem) {
  const auto before = exporting.folder.names();
  for (const rlim_t size : {100UL, 1000UL, 17000UL}) {
    const FileSizeLimit limit(size);
    EXPECT_EQ(exporting.failureOf(sample("telephone-h264.mov"), mpeg4), "File too large") << size;
  }
  const FileSizeLimit limit(1000);
  EXPECT_EQ(exporting.failureOf(sample("prores.mov"), mpeg4), "File too large");
  expectNothingLeft(before);
}

TEST_F(DamagedFilm, IsNeverWrittenOverAnotherFile) {
  const FileURL other = exporting.folder.write("exported1.mp4", "somebody else's");
  EXPECT_EQ(exporting.failureOf(sample("silent.mp4"), mpeg4), "File exists");
  EXPECT_EQ(test::contentOf(other), "somebody else's");
}

}  // namespace
}  // namespace kestrivane::mediaTesting

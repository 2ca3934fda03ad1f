// Whether what the tool made of a film is recognised as whole, and what was lost as lost.
#include <string>

#include <gtest/gtest.h>

#include "platform/linux/media/MediaReach.hpp"
#include "tests/platform/media/MediaTesting.hpp"

namespace kestrivane::mediaTesting {
namespace {

const std::string settingsOfMP3 = " -vn -ar 44100 -ac 2 -b:a 192k ";

class MediaReach : public testing::Test {
 protected:
  FileURL made(const std::string& name, const std::string& arguments) {
    const FileURL url = folder.url(name);
    make(arguments + " " + url.path());
    return url;
  }

  /// What the tool makes of `source`, as the converter asks for it.
  FileURL converted(const FileURL& source, const std::string& extension,
                    const std::string& limits = "") {
    const std::string settings = extension == "mp3" ? settingsOfMP3 : " ";
    return made("result" + std::to_string(++count_) + "." + extension,
                "-i " + source.path() + settings + limits);
  }

  FileURL filmOfTwelveSeconds() {
    return made("film.mkv",
                "-f lavfi -i testsrc=s=64x64:r=10:d=12 -f lavfi -i sine=d=12 "
                "-c:v libx264 -preset ultrafast -c:a aac");
  }

  FileURL cutOff(const FileURL& film, double share) {
    const std::string bytes = test::contentOf(film);
    const auto size = static_cast<std::size_t>(static_cast<double>(bytes.size()) * share);
    return folder.write("cut." + film.pathExtension(), bytes.substr(0, size));
  }

  void expectWhole(const FileURL& source, const std::string& extension) {
    EXPECT_FALSE(isCutShort(converted(source, extension), source))
        << source.path() << " to " << extension;
  }

  const test::TemporaryFolder folder;

 private:
  int count_ = 0;
};

TEST_F(MediaReach, EveryRealConversionIsWhole) {
  for (const char* const film : {"telephone-h264.mov", "late-sound.mov", "trimmed.mp4", "vp9.webm",
                                 "several.mp4", "mpeg4.mp4", "av1.webm"}) {
    expectWhole(sample(film), "mp3");
    expectWhole(sample(film), "webm");
  }
  for (const char* const film : {"silent.mp4", "telephone-hevc.mp4", "song.m4a"})
    expectWhole(sample(film), "webm");
  for (const char* const extension : {"mp4", "mov", "m4v", "mkv", "avi", "flv", "wav", "gif"})
    expectWhole(sample("vp9.webm"), extension);
}

TEST_F(MediaReach, SoundThatIsShorterThanThePictureIsWhole) {
  const FileURL shortSound = made("short-sound.mkv",
                                  "-f lavfi -i testsrc=s=64x64:r=10:d=8 -f lavfi -i sine=d=3 "
                                  "-c:v libx264 -preset ultrafast -c:a aac");
  const FileURL shortPicture = made("short-picture.mkv",
                                    "-f lavfi -i testsrc=s=64x64:r=10:d=3 -f lavfi -i sine=d=8 "
                                    "-c:v libx264 -preset ultrafast -c:a aac");
  for (const FileURL& film : {shortSound, shortPicture}) {
    expectWhole(film, "mp3");
    expectWhole(film, "webm");
  }
}

TEST_F(MediaReach, GapsInTheSoundAreNotMissed) {
  // A recording of a call holds no packets while nobody speaks.
  const std::string gaps =
      "-f lavfi -i sine=d=20 -af aselect='lt(mod(t\\,4)\\,1)' -fps_mode passthrough ";
  for (const char* const name : {"call.webm", "call.mkv", "call.mp4"}) {
    const FileURL call = made(name, gaps);
    expectWhole(call, "mp3");
    expectWhole(call, "webm");
  }
}

TEST_F(MediaReach, FramesThatStandForLongAreNotMissed) {
  // Of one frame in five seconds, the last one of which is shown for five more.
  const FileURL slides = made("slides.mkv",
                              "-f lavfi -i testsrc=s=64x64:r=1/5:d=20 -c:v libx264 "
                              "-preset ultrafast");
  const FileURL lasting = made("lasting.mp4",
                               "-f lavfi -i testsrc=s=64x64:r=10:d=2 -vf "
                               "setpts='if(eq(N\\,19)\\,PTS+100/TB\\,PTS)' -fps_mode vfr "
                               "-c:v libx264 -preset ultrafast -bf 0");
  expectWhole(slides, "webm");
  expectWhole(lasting, "webm");
}

TEST_F(MediaReach, AClockThatJumpsIsNotMissed) {
  const FileURL jumping = made("jumping.mkv",
                               "-f lavfi -i testsrc=s=64x64:r=10:d=4 -f lavfi -i sine=d=4 -vf "
                               "setpts='if(gt(N\\,20)\\,PTS+3600/TB\\,PTS)' -af "
                               "asetpts='if(gt(N\\,80)\\,PTS+3600/TB\\,PTS)' -fps_mode vfr "
                               "-c:v libx264 -preset ultrafast -bf 0 -c:a aac");
  expectWhole(jumping, "webm");
  expectWhole(jumping, "mp3");
}

TEST_F(MediaReach, WhatIsCutOffIsFound) {
  const FileURL film = filmOfTwelveSeconds();
  for (const char* const extension : {"webm", "mp3", "mp4", "mov", "m4v", "mkv", "wav"}) {
    const FileURL whole = converted(film, extension);
    EXPECT_FALSE(isCutShort(whole, film)) << extension;
    EXPECT_TRUE(isCutShort(cutOff(whole, 0.6), film)) << extension;
    // As the tool leaves it when its source cannot be read any further.
    const FileURL half = converted(film, extension, " -t 6 ");
    EXPECT_TRUE(isCutShort(half, film)) << extension;
    EXPECT_TRUE(isCutShort(converted(film, extension, " -t 10 "), film)) << extension;
  }
}

TEST_F(MediaReach, AFileWithoutItsBeginningIsFound) {
  const FileURL film = sample("vp9.webm");
  EXPECT_TRUE(isCutShort(folder.write("empty.mp4", ""), film));
  EXPECT_TRUE(isCutShort(folder.write("text.webm", "Dear diary"), film));
}

TEST_F(MediaReach, WhatIsUnknownIsNotJudged) {
  const FileURL film = sample("vp9.webm");
  const FileURL text = folder.write("text.mp4", "Dear diary");
  EXPECT_FALSE(isCutShort(film, text));
  EXPECT_FALSE(isCutShort(film, folder.url("missing.mp4")));
  EXPECT_FALSE(isCutShort(folder.write("picture.png", "no film"), film));
  EXPECT_FALSE(isCutShort(folder.url("missing.gif"), film));
}

TEST_F(MediaReach, ASourceThatIsItselfCutOffIsNoLoss) {
  const FileURL film = filmOfTwelveSeconds();
  const FileURL cut = cutOff(film, 0.6);
  EXPECT_FALSE(isCutShort(converted(cut, "webm"), cut));
}

}  // namespace
}  // namespace kestrivane::mediaTesting

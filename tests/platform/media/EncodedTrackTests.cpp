// Tracks that the target container does not take: H.264 and AAC that look and sound the same.
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/platform/media/MediaTesting.hpp"

namespace kestrivane::mediaTesting {
namespace {

using enum MediaFileType;
using Lines = std::vector<std::string>;

class EncodedFilm : public testing::Test {
 protected:
  Exporting exporting;
};

/// To a frame.
constexpr double frame = 0.034;

double durationOf(const FileURL& url, const std::string& track) {
  return std::stod(probe(url, track, "stream=duration").at(0));
}

TEST_F(EncodedFilm, ofProResAndPCMBecomesH264AndAAC) {
  const FileURL source = sample("prores.mov");
  for (const MediaFileType fileType : {mpeg4, appleM4V}) {
    const FileURL result = exporting.exported(source, fileType);
    EXPECT_EQ(probe(result, "v", "stream=codec_name,profile,pix_fmt,color_space,color_transfer"),
              Lines{"h264|High|yuv420p|bt709|bt709"});
    EXPECT_EQ(probe(result, "a", "stream=codec_name,sample_rate,channels"), Lines{"aac|48000|1"});
    EXPECT_EQ(probe(result, "v", "stream_tags=timecode"), Lines{"01:00:00:00"});
    EXPECT_NEAR(durationOf(result, "v"), durationOf(source, "v"), frame);
    EXPECT_NEAR(durationOf(result, "a"), durationOf(source, "a"), frame);
    EXPECT_GT(similarity(result, source), 0.98);
  }
}

TEST_F(EncodedFilm, ofWebMKeepsTheTimeOfEveryFrame) {
  for (const std::string film : {"vp9.webm", "av1.webm"}) {
    const std::string times = "frame=best_effort_timestamp_time";
    const FileURL result = exporting.exported(sample(film), quickTimeMovie);
    const Lines before = probe(sample(film), "v", times);
    const Lines after = probe(result, "v", times);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i)
      EXPECT_NEAR(std::stod(after[i]), std::stod(before[i]), 0.001) << film;
    EXPECT_GT(similarity(result, sample(film)), 0.98);
    EXPECT_EQ(probe(result, "a", "stream=codec_name"), Lines{"aac"});
  }
}

TEST_F(EncodedFilm, KeepsUnevenTimesTurningAndShape) {
  const FileURL source = exporting.folder.url("source.mov");
  make("-i " + sample("telephone-h264.mov").path() +
       " -an -vf setsar=4/3 -fps_mode passthrough -enc_time_base 1:600 -c:v mjpeg -q:v 2 " +
       "-metadata:s:v rotate=90 " + source.path());
  const std::string times = "frame=best_effort_timestamp_time";
  const FileURL result = exporting.exported(source, mpeg4);
  EXPECT_EQ(probe(result, "v", times), probe(source, "v", times));
  EXPECT_EQ(probe(result, "v", "stream=sample_aspect_ratio"), Lines{"4:3"});
  EXPECT_EQ(probe(result, "v", "stream_side_data=rotation"),
            probe(source, "v", "stream_side_data=rotation"));
  EXPECT_EQ(probe(source, "v", "stream=color_range"), Lines{"pc"});
  EXPECT_EQ(probe(result, "v", "stream=color_range"), Lines{"pc"});
  EXPECT_GT(similarity(result, source), 0.98);
}

TEST_F(EncodedFilm, ThatIsInterlacedStaysSo) {
  const FileURL source = sample("interlaced.mov");
  const FileURL result = exporting.exported(source, mpeg4);
  EXPECT_EQ(probe(result, "v", "frame=interlaced_frame,top_field_first").front(), "1|1");
  EXPECT_EQ(probe(result, "v", "stream=sample_aspect_ratio"), Lines{"16:15"});
  EXPECT_GT(similarity(result, source), 0.98);
}

TEST_F(EncodedFilm, OfOddSidesInRGBGetsEvenOnesAndItsColours) {
  const FileURL source = sample("odd-rgb.mov");
  ASSERT_EQ(probe(source, "v", "stream=width,height,pix_fmt"), Lines{"61|45|rgb24"});
  const FileURL result = exporting.exported(source, mpeg4);
  EXPECT_EQ(probe(result, "v", "stream=width,height,pix_fmt,color_space"),
            Lines{"62|46|yuv420p|smpte170m"});
  const FileURL reference = exporting.folder.url("reference.mkv");
  make("-i " + source.path() + " -vf scale=62:46:out_color_matrix=smpte170m,format=yuv420p " +
       "-c:v ffv1 " + reference.path());
  EXPECT_GT(similarity(result, reference), 0.98);
}

TEST_F(EncodedFilm, OfHighDynamicRangeKeepsTenBitsAndItsCurve) {
  const FileURL source = exporting.folder.url("source.mov");
  make("-i " + sample("hdr.mp4").path() + " -frames:v 3 -vf " +
       "setparams=color_primaries=bt2020:color_trc=smpte2084:colorspace=bt2020nc " +
       "-c:v prores_ks " + source.path());
  const FileURL result = exporting.exported(source, mpeg4);
  EXPECT_EQ(probe(result, "v", "stream=pix_fmt,color_space,color_transfer,color_primaries"),
            Lines{"yuv420p10le|bt2020nc|smpte2084|bt2020"});
}

TEST_F(EncodedFilm, GetsTheBitRateOfItsChannels) {
  const FileURL source = exporting.folder.url("source.mov");
  make(
      "-f lavfi -i 'aevalsrc=random(0)|random(1)|random(2)|random(3)|random(4)|random(5):"
      "c=5.1:s=48000:d=3' -f lavfi -i testsrc=size=64x64:duration=3 -map 1 -map 0 -map 0 -map 0 "
      "-c:v mjpeg -c:a pcm_s16le -ac:a:0 2 -ac:a:2 1 -ar:a:2 192000 " +
      source.path());
  const FileURL result = exporting.exported(source, mpeg4);
  const Lines tracks = probe(result, "a", "stream=channels,sample_rate,bit_rate");
  ASSERT_EQ(tracks.size(), 3U);
  EXPECT_TRUE(tracks[0].starts_with("48000|2|")) << tracks[0];
  EXPECT_TRUE(tracks[1].starts_with("48000|6|")) << tracks[1];
  EXPECT_TRUE(tracks[2].starts_with("96000|1|")) << tracks[2];
  EXPECT_NEAR(std::stod(tracks[0].substr(8)), 256'000, 20'000);
  EXPECT_NEAR(std::stod(tracks[1].substr(8)), 768'000, 60'000);
}

TEST_F(EncodedFilm, KeepsSoundInStepWithThePicture) {
  // Silence but for a click at one second, in a track that begins at half a second.
  const FileURL source = exporting.folder.url("source.mov");
  make(
      "-f lavfi -i testsrc=size=64x64:duration=2 -itsoffset 0.5 "
      "-f lavfi -i 'aevalsrc=lt(abs(t-0.5)\\,0.005):duration=1.5:sample_rate=44100' "
      "-map 0 -map 1 -c:v mjpeg -c:a pcm_s16le " +
      source.path());
  const FileURL result = exporting.exported(source, mpeg4);
  const auto clickIn = [](const FileURL& url) {
    return std::stod(outputOf("ffmpeg -v info -copyts -i " + url.path() +
                              " -map 0:a -af silencedetect=noise=-30dB:duration=0.1 -f null - "
                              "2>&1 | grep -m 1 -o 'silence_end: [0-9.]*' | cut -c 14-"));
  };
  EXPECT_NEAR(clickIn(source), 1.0, 0.02);
  EXPECT_NEAR(clickIn(result), clickIn(source), 0.02);
}

TEST_F(EncodedFilm, FillsAGapInTheSoundWithSilence) {
  const FileURL first = exporting.folder.url("first.mka");
  const FileURL source = exporting.folder.url("source.mkv");
  make("-f lavfi -i sine=duration=3 -af \"aselect='not(between(t,1,2))'\" -c:a pcm_s16le " +
       source.path());
  const FileURL result = exporting.exported(source, mpeg4);
  EXPECT_NEAR(durationOf(result, "a"), 3, 0.1);
}

TEST_F(EncodedFilm, LeavesOutASoundTrackThatNobodyCanDecodeOnlyIfAnotherIsLeft) {
  const auto withUnknownSound = [this](const FileURL& film) {
    std::string bytes = test::contentOf(film);
    bytes.replace(bytes.find("ac-3"), 4, "zzzz");
    return exporting.folder.write("unknown.mp4", bytes);
  };
  const FileURL both = sample("several.mp4");
  const FileURL result = exporting.exported(withUnknownSound(both), quickTimeMovie);
  EXPECT_EQ(probe(result, "a", "stream=codec_name"), Lines{"aac"});
  const FileURL one = exporting.folder.url("one.mp4");
  make("-i " + both.path() + " -map 0:v -map 0:a:0 -c copy " + one.path());
  EXPECT_EQ(exporting.failureOf(withUnknownSound(one), quickTimeMovie), "Decoder not found");
}

}  // namespace
}  // namespace kestrivane::mediaTesting

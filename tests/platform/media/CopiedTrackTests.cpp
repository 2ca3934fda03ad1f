// Tracks that the target container takes: the same bytes at the same times.
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/platform/media/MediaTesting.hpp"

namespace kestrivane::mediaTesting {
namespace {

using enum MediaFileType;

struct CopyCase {
  std::string film;
  MediaFileType fileType;
  std::vector<std::string> tracks;
};

class CopiedTracks : public testing::TestWithParam<CopyCase> {
 protected:
  Exporting exporting;
};

TEST_P(CopiedTracks, areTheSameBytesAtTheSameTimes) {
  const FileURL source = sample(GetParam().film);
  const FileURL result = exporting.exported(source, GetParam().fileType);
  for (const std::string& track : GetParam().tracks) {
    const auto before = packetsOf(source, track);
    const auto after = packetsOf(result, track);
    ASSERT_FALSE(before.empty()) << track;
    ASSERT_EQ(after.size(), before.size()) << track;
    for (std::size_t i = 0; i < before.size(); ++i) {
      EXPECT_EQ(after[i].sizeAndHash, before[i].sizeAndHash) << track << " packet " << i;
      EXPECT_NEAR(after[i].milliseconds, before[i].milliseconds, 0.6) << track << " packet " << i;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Films, CopiedTracks,
    testing::Values(
        CopyCase{"telephone-h264.mov", mpeg4, {"v", "a"}},
        CopyCase{"telephone-h264.mov", appleM4V, {"v", "a"}},
        CopyCase{"telephone-hevc.mp4", quickTimeMovie, {"v", "a"}},
        CopyCase{"hdr.mp4", quickTimeMovie, {"v"}},
        CopyCase{"prores.mov", quickTimeMovie, {"v", "a"}},
        CopyCase{"mpeg4.mp4", quickTimeMovie, {"v", "a"}}, CopyCase{"mpeg4.mp4", appleM4V, {"v"}},
        CopyCase{"vp9.webm", mpeg4, {"v", "a"}}, CopyCase{"av1.webm", mpeg4, {"v", "a"}},
        CopyCase{"several.mp4", quickTimeMovie, {"v", "a:0", "a:1", "s"}},
        CopyCase{"several.mp4", appleM4V, {"v", "a:0", "a:1", "s"}},
        CopyCase{"silent.mp4", appleM4V, {"v"}}, CopyCase{"song.m4a", mpeg4, {"a", "v"}},
        CopyCase{"song.m4a", appleM4V, {"a", "v"}}, CopyCase{"song.m4a", quickTimeMovie, {"a"}},
        CopyCase{"trimmed.mp4", quickTimeMovie, {"v", "a"}},
        CopyCase{"late-sound.mov", mpeg4, {"v", "a"}}),
    [](const auto& test) {
      std::string name = test.param.film + std::to_string(static_cast<int>(test.param.fileType));
      std::erase_if(name, [](char c) { return c == '.' || c == '-'; });
      return name;
    });

class CopiedFilm : public testing::Test {
 protected:
  Exporting exporting;
};

TEST_F(CopiedFilm, isShownInItsOriginalPosition) {
  const std::string rotation = "stream_side_data=rotation";
  const FileURL upright = exporting.exported(sample("telephone-h264.mov"), mpeg4);
  EXPECT_EQ(probe(upright, "v", rotation), std::vector<std::string>{"90"});
  const FileURL other = exporting.exported(sample("telephone-hevc.mp4"), quickTimeMovie);
  EXPECT_EQ(probe(other, "v", rotation), std::vector<std::string>{"-90"});
}

TEST_F(CopiedFilm, callsHEVCByTheNameThatEveryPlayerTakes) {
  for (const MediaFileType fileType : {mpeg4, quickTimeMovie, appleM4V}) {
    const FileURL result = exporting.exported(sample("telephone-hevc.mp4"), fileType);
    EXPECT_EQ(probe(result, "v", "stream=codec_tag_string"), std::vector<std::string>{"hvc1"});
  }
}

TEST_F(CopiedFilm, hasTheBrandOfItsExtension) {
  const auto brandOf = [this](MediaFileType fileType) {
    return probe(exporting.exported(sample("silent.mp4"), fileType), "", "format_tags=major_brand");
  };
  EXPECT_EQ(brandOf(mpeg4), std::vector<std::string>{"isom"});
  EXPECT_EQ(brandOf(quickTimeMovie), std::vector<std::string>{"qt  "});
  EXPECT_EQ(brandOf(appleM4V), std::vector<std::string>{"M4V "});
}

TEST_F(CopiedFilm, keepsLanguagesAndWhichTrackIsHeard) {
  const std::string entries = "stream=codec_name:stream_disposition=default:stream_tags=language";
  const std::vector<std::string> expected = {"ac3|0|rus", "aac|1|eng"};
  ASSERT_EQ(probe(sample("several.mp4"), "a", entries), expected);
  EXPECT_EQ(probe(exporting.exported(sample("several.mp4"), quickTimeMovie), "a", entries),
            expected);
  EXPECT_EQ(
      probe(exporting.exported(sample("telephone-h264.mov"), mpeg4), "a", "stream_tags=language"),
      std::vector<std::string>{"rus"});
}

TEST_F(CopiedFilm, keepsItsChapters) {
  const std::vector<std::string> expected = {"0.000000|0.500000|Начало",
                                             "0.500000|1.200000|The end"};
  for (const MediaFileType fileType : {quickTimeMovie, appleM4V}) {
    const FileURL result = exporting.exported(sample("several.mp4"), fileType);
    EXPECT_EQ(probe(result, "", "chapter=start_time,end_time:chapter_tags=title"), expected);
  }
}

TEST_F(CopiedFilm, keepsTitleDateAndPlace) {
  const std::string entries = "format_tags=title,creation_time,location";
  const std::vector<std::string> expected = {
      "2021-06-05T10:20:30.000000Z|A hand|+55.7500+037.6200/"};
  for (const MediaFileType fileType : {mpeg4, quickTimeMovie, appleM4V}) {
    const FileURL result = exporting.exported(sample("telephone-h264.mov"), fileType);
    EXPECT_EQ(probe(result, "", entries), expected);
  }
}

TEST_F(CopiedFilm, keepsTheCoverOfASong) {
  const FileURL result = exporting.exported(sample("song.m4a"), mpeg4);
  EXPECT_EQ(probe(result, "v", "stream=codec_name:stream_disposition=attached_pic"),
            std::vector<std::string>{"mjpeg|1"});
  EXPECT_EQ(probe(result, "", "format_tags=title,artist"),
            std::vector<std::string>{"A song|Nobody"});
}

TEST_F(CopiedFilm, keepsTheColoursOfHighDynamicRange) {
  const std::string stream = "stream=color_space,color_transfer,color_primaries,pix_fmt";
  const std::string light = "side_data=max_content,max_average,red_x,white_point_y,max_luminance";
  const FileURL source = sample("hdr.mp4");
  ASSERT_EQ(probe(source, "v", stream),
            std::vector<std::string>{"yuv420p10le|bt2020nc|smpte2084|bt2020"});
  const auto lightOf = [&light](const FileURL& url) {
    return probe(url, "v", "frame=pict_type:" + light + " -read_intervals %+#1");
  };
  for (const MediaFileType fileType : {mpeg4, quickTimeMovie}) {
    const FileURL result = exporting.exported(source, fileType);
    EXPECT_EQ(probe(result, "v", stream), probe(source, "v", stream));
    EXPECT_EQ(lightOf(result), lightOf(source));
  }
  EXPECT_NE(lightOf(source).front().find("1000"), std::string::npos);
}

TEST_F(CopiedFilm, hasNoTraceOfTheWriterInIt) {
  const FileURL result = exporting.exported(sample("silent.mp4"), mpeg4);
  EXPECT_EQ(test::contentOf(result).find("Lavf"), std::string::npos);
}

// Its times are whole milliseconds, from which 19 or 21 may be read where 20 are meant. The first
// one alone tells nothing about that.
TEST_F(CopiedFilm, ofWebMHasSoundPacketsOfOneLength) {
  const FileURL result = exporting.exported(sample("vp9.webm"), mpeg4);
  std::vector<std::string> times = probe(result, "a", "packet=dts");
  ASSERT_GT(times.size(), 20U);
  times.pop_back();  // the last one ends with the sound
  for (std::size_t i = 2; i < times.size(); ++i)
    EXPECT_EQ(std::stol(times[i]) - std::stol(times[i - 1]), 960) << i;
}

// Two parts of a film, one after the other, of a track that has key frames elsewhere.
TEST_F(CopiedFilm, ThatIsCutInsideShowsWhatItsEditListShows) {
  const FileURL source = exporting.folder.url("cut.mp4");
  make(
      "-f lavfi -i testsrc=size=64x64:rate=10:duration=4 -c:v libx264 -g 15 -bf 0 -pix_fmt "
      "yuv420p " +
      source.path());
  // The edit list of the one track is replaced by two parts: from 0 to 1 s and from 2.7 to 3.7 s.
  std::string bytes = test::contentOf(source);
  const auto number = [](std::uint32_t value) {
    return std::string{static_cast<char>(value >> 24), static_cast<char>(value >> 16),
                       static_cast<char>(value >> 8), static_cast<char>(value)};
  };
  const std::size_t list = bytes.find("elst");
  ASSERT_NE(list, std::string::npos);
  const std::string part = number(1000) + number(0) + number(0x10000);
  const std::string other = number(1000) + number(27 * 1024) + number(0x10000);
  ASSERT_EQ(bytes.substr(list - 4, 4), number(28));
  bytes.replace(list - 4, 28, number(40) + "elst" + number(0) + number(2) + part + other);
  for (const std::string box : {"edts", "trak", "moov"}) {
    const std::size_t size = bytes.rfind(box, list) - 4;
    const std::uint32_t former = static_cast<std::uint8_t>(bytes[size + 2]) * 256U +
                                 static_cast<std::uint8_t>(bytes[size + 3]);
    bytes.replace(size, 4, number(former + 12));
  }
  const FileURL cut = exporting.folder.write("cut.mov", bytes);
  const auto shown = probe(cut, "v", "frame=best_effort_timestamp_time");
  ASSERT_NEAR(static_cast<double>(shown.size()), 20, 2);
  const FileURL result = exporting.exported(cut, mpeg4);
  EXPECT_EQ(probe(result, "v", "frame=best_effort_timestamp_time").size(), shown.size());
  EXPECT_GT(similarity(result, cut), 0.98);
}

}  // namespace
}  // namespace kestrivane::mediaTesting

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "converters/VideoConverter.hpp"
#include "engine/ConversionError.hpp"
#include "tests/support/FakeAssetExporter.hpp"
#include "tests/support/FakeLocale.hpp"
#include "tests/support/RunTask.hpp"

namespace kestrivane::test {
namespace {

class VideoConverterTest : public testing::Test {
 protected:
  void convert(const std::string& source, const std::string& destination) {
    runTask(loop, converter.convert(FileURL(source), FileURL(destination)));
  }

  std::string failureOf(const std::string& source, const std::string& destination) {
    try {
      convert(source, destination);
    } catch (const ConversionError& error) {
      return error.errorDescription();
    }
    return "no failure";
  }

  VirtualLoop loop;
  InMemoryFileSystem files;
  FakeAssetExporter exporter{files};
  VideoConverter converter{exporter};
};

TEST_F(VideoConverterTest, AcceptsAnyPairOfItsThreeExtensionsInAnyCase) {
  const std::vector<std::string> extensions = {"mp4", "mov", "m4v"};
  for (const std::string& from : extensions) {
    for (const std::string& to : extensions)
      EXPECT_TRUE(converter.canConvert(from, to)) << from << " to " << to;
  }
  EXPECT_TRUE(converter.canConvert("MOV", "mp4"));
  EXPECT_TRUE(converter.canConvert("mov", "M4V"));
}

TEST_F(VideoConverterTest, DeclinesEveryOtherPair) {
  EXPECT_FALSE(converter.canConvert("mp4", "webm"));
  EXPECT_FALSE(converter.canConvert("avi", "mp4"));
  EXPECT_FALSE(converter.canConvert("webm", "mkv"));
  EXPECT_FALSE(converter.canConvert("", "mp4"));
  EXPECT_FALSE(converter.canConvert("mp4", ""));
  EXPECT_FALSE(converter.canConvert("mp4", ".mov"));
}

struct VideoTypeCase {
  std::string extension;
  std::string type;
};

class VideoConverterTypes : public VideoConverterTest,
                            public testing::WithParamInterface<VideoTypeCase> {};

TEST_P(VideoConverterTypes, AreChosenFromTheExtensionOfTheDestination) {
  files.writeFile("/w/clip", "film of a cat");
  const std::string destination = "/tmp/out." + GetParam().extension;
  convert("/w/clip", destination);
  EXPECT_EQ(files.content(destination), GetParam().type + " of a cat");
  EXPECT_EQ(exporter.operations,
            (std::vector<std::string>{"session /w/clip highestQuality",
                                      "export " + destination + " " + GetParam().type}));
}

INSTANTIATE_TEST_SUITE_P(Targets, VideoConverterTypes,
                         testing::Values(VideoTypeCase{"mp4", "mpeg4"},
                                         VideoTypeCase{"MP4", "mpeg4"},
                                         VideoTypeCase{"mov", "quickTimeMovie"},
                                         VideoTypeCase{"Mov", "quickTimeMovie"},
                                         VideoTypeCase{"m4v", "appleM4V"}));

TEST_F(VideoConverterTest, AnotherTargetIsUnsupportedAndKeepsTheCaseOfTheExtensions) {
  files.writeFile("/w/clip.Mp4", "film of a cat");
  EXPECT_EQ(failureOf("/w/clip.Mp4", "/tmp/out.mKv"),
            "Conversion from 'Mp4' to 'mKv' is not supported.");
  const LanguageGuard russian("ru");
  EXPECT_EQ(failureOf("/w/clip.Mp4", "/tmp/out.mKv"),
            "Конвертация из 'Mp4' в 'mKv' не поддерживается.");
  EXPECT_TRUE(exporter.operations.empty());
}

TEST_F(VideoConverterTest, WithoutASessionItFailsWithTheRussianTextInBothLanguages) {
  files.writeFile("/w/diary.mov", "Dear diary");
  EXPECT_EQ(failureOf("/w/diary.mov", "/tmp/out.mov"),
            "Conversion error: Не удалось создать AVAssetExportSession для видео: diary.mov");
  EXPECT_EQ(failureOf("/w/missing.mp4", "/tmp/out.mp4"),
            "Conversion error: Не удалось создать AVAssetExportSession для видео: missing.mp4");
  const LanguageGuard russian("ru");
  EXPECT_EQ(failureOf("/w/diary.mov", "/tmp/out.mov"),
            "Ошибка конвертации: Не удалось создать AVAssetExportSession для видео: diary.mov");
}

TEST_F(VideoConverterTest, AnErrorInTheMakingOfTheSessionIsDescribedByIt) {
  files.writeFile("/w/clip.mov", "film of a cat");
  exporter.sessionFailure = "A part cannot be loaded.";
  EXPECT_EQ(failureOf("/w/clip.mov", "/tmp/out.mp4"), "Conversion error: A part cannot be loaded.");
  const LanguageGuard russian("ru");
  EXPECT_EQ(failureOf("/w/clip.mov", "/tmp/out.mp4"),
            "Ошибка конвертации: A part cannot be loaded.");
}

TEST_F(VideoConverterTest, AFailedExportIsDescribedByItsError) {
  files.writeFile("/w/clip.mov", "film of a cat");
  exporter.exportFailure = "No space left on device";
  EXPECT_EQ(failureOf("/w/clip.mov", "/tmp/out.mp4"), "Conversion error: No space left on device");
  const LanguageGuard russian("ru");
  EXPECT_EQ(failureOf("/w/clip.mov", "/tmp/out.mp4"),
            "Ошибка конвертации: No space left on device");
}

TEST_F(VideoConverterTest, NeverTouchesTheSource) {
  files.writeFile("/w/clip.mov", "film of a cat");
  convert("/w/clip.mov", "/tmp/out.mp4");
  EXPECT_EQ(files.content("/w/clip.mov"), "film of a cat");
  exporter.exportFailure = "End of file";
  failureOf("/w/clip.mov", "/tmp/other.mp4");
  EXPECT_EQ(files.content("/w/clip.mov"), "film of a cat");
}

}  // namespace
}  // namespace kestrivane::test

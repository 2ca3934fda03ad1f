#include <cerrno>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "converters/FFmpegConverter.hpp"
#include "engine/ConversionError.hpp"
#include "tests/support/FakeBundle.hpp"
#include "tests/support/FakeLocale.hpp"
#include "tests/support/FakeLog.hpp"
#include "tests/support/FakeMediaInspector.hpp"
#include "tests/support/FakeProcess.hpp"
#include "tests/support/RunTask.hpp"

namespace kestrivane::test {
namespace {

const std::string toolPath = "/app/libexec/ffmpeg";
const std::string resourcePath = "/app/share/ffmpeg";

class FFmpegConverterTest : public testing::Test {
 protected:
  FFmpegConverterTest() {
    files.createDirectory("/app");
    bundle.auxiliaryExecutables.emplace("ffmpeg", FileURL(toolPath));
    bundle.resources.emplace("ffmpeg", FileURL(resourcePath));
  }

  void convert(const std::string& source, const std::string& destination) {
    runTask(loop, converter.convert(FileURL(source), FileURL(destination)));
  }

  std::vector<std::string> argumentsFor(const std::string& source, const std::string& destination) {
    files.writeFile(toolPath, "exit 0");
    convert(source, destination);
    return process.runs.back().arguments;
  }

  std::string failure() {
    try {
      convert("/w/clip.webm", "/tmp/1.webm");
    } catch (const ConversionError& error) {
      EXPECT_EQ(error.caseIndex(), ConversionError::Case::conversionFailed);
      return error.errorDescription();
    }
    return "no failure";
  }

  VirtualLoop loop;
  InMemoryFileSystem files;
  FakeBundle bundle;
  FakeProcess process{files};
  FakeMediaInspector inspector;
  FakeLog log;
  FFmpegConverter converter{{bundle, files, process, inspector, log, loop}};
};

struct PairCase {
  std::string from;
  std::string to;
};

class FFmpegConverterAcceptedPairs : public FFmpegConverterTest,
                                     public testing::WithParamInterface<PairCase> {};

TEST_P(FFmpegConverterAcceptedPairs, AreAccepted) {
  EXPECT_TRUE(converter.canConvert(GetParam().from, GetParam().to));
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, FFmpegConverterAcceptedPairs,
    testing::Values(PairCase{"WEBM", "mp4"}, PairCase{"mp4", "webm"}, PairCase{"mp4", "WebM"},
                    PairCase{"webm", "webm"}, PairCase{"webm", "txt"}, PairCase{"", "webm"},
                    PairCase{"webm", ""}, PairCase{"mp4", "mp3"}, PairCase{"MOV", "MP3"},
                    PairCase{"m4v", "mp3"}, PairCase{"mkv", "mp3"}, PairCase{"avi", "mp3"},
                    PairCase{"flv", "mp3"}, PairCase{"webm", "mp3"}, PairCase{"mp3", "webm"}));

class FFmpegConverterDeclinedPairs : public FFmpegConverterTest,
                                     public testing::WithParamInterface<PairCase> {};

TEST_P(FFmpegConverterDeclinedPairs, AreDeclined) {
  EXPECT_FALSE(converter.canConvert(GetParam().from, GetParam().to));
}

INSTANTIATE_TEST_SUITE_P(Pairs, FFmpegConverterDeclinedPairs,
                         testing::Values(PairCase{"wav", "mp3"}, PairCase{"m4a", "mp3"},
                                         PairCase{"mp3", "mp3"}, PairCase{"mp4", "mkv"},
                                         PairCase{"mp3", "mp4"}, PairCase{"", "mp3"},
                                         PairCase{"mp4", ""}, PairCase{"", ""},
                                         PairCase{"mov", "mp4"}, PairCase{"png", "jpg"}));

TEST_F(FFmpegConverterTest, GivesTheToolTheTwoPaths) {
  files.writeFile(toolPath, "exit 0");
  convert("/w/a clip.webm", "/tmp/1.webm");
  EXPECT_EQ(
      process.runs,
      (std::vector<FakeProcess::Run>{{toolPath, {"-y", "-i", "/w/a clip.webm", "/tmp/1.webm"}}}));
}

TEST_F(FFmpegConverterTest, AddsTheSettingsOfMP3WhateverTheCaseOfTheExtension) {
  EXPECT_EQ(argumentsFor("/w/talk.mp3", "/tmp/5.mp3"),
            (std::vector<std::string>{"-y", "-i", "/w/talk.mp3", "-vn", "-ar", "44100", "-ac", "2",
                                      "-b:a", "192k", "/tmp/5.mp3"}));
  EXPECT_EQ(argumentsFor("/w/talk.MP3", "/tmp/5.MP3"),
            (std::vector<std::string>{"-y", "-i", "/w/talk.MP3", "-vn", "-ar", "44100", "-ac", "2",
                                      "-b:a", "192k", "/tmp/5.MP3"}));
}

TEST_F(FFmpegConverterTest, PrefersTheAuxiliaryExecutable) {
  files.writeFile(toolPath, "exit 0");
  files.writeFile(resourcePath, "exit 0");
  convert("/w/a.webm", "/tmp/1.webm");
  EXPECT_EQ(process.runs.at(0).executable, toolPath);
}

TEST_F(FFmpegConverterTest, TakesTheResourceWhereTheBundleHasNoAuxiliaryExecutable) {
  bundle.auxiliaryExecutables.clear();
  files.writeFile(resourcePath, "exit 0");
  convert("/w/a.webm", "/tmp/1.webm");
  EXPECT_EQ(process.runs.at(0).executable, resourcePath);
}

TEST_F(FFmpegConverterTest, TakesTheResourceWhereNoFileIsAtThePathOfTheAuxiliaryExecutable) {
  files.writeFile(resourcePath, "exit 0");
  convert("/w/a.webm", "/tmp/1.webm");
  EXPECT_EQ(process.runs.at(0).executable, resourcePath);
}

TEST_F(FFmpegConverterTest, LooksForTheToolAnewAtEveryCall) {
  EXPECT_EQ(failure(), "Conversion error: Internal conversion component is missing.");
  files.writeFile(toolPath, "exit 0");
  EXPECT_EQ(failure(), "no failure");
}

TEST_F(FFmpegConverterTest, WithoutTheToolEveryCallFailsAndNothingIsStarted) {
  const std::string english = "Conversion error: Internal conversion component is missing.";
  const std::string russian = "Ошибка конвертации: Внутренний компонент конвертации отсутствует.";
  const auto expectMissing = [&] {
    EXPECT_EQ(failure(), english);
    const LanguageGuard guard("ru");
    EXPECT_EQ(failure(), russian);
  };
  expectMissing();  // the bundle names paths where nothing is
  bundle.auxiliaryExecutables.clear();
  expectMissing();
  bundle.resources.clear();
  expectMissing();
  EXPECT_TRUE(process.runs.empty());
}

TEST_F(FFmpegConverterTest, AnExitStatusOtherThanZeroIsDescribedTwiceOver) {
  for (const std::string program : {"exit 1", "exit 255", "killed 9"}) {
    files.writeFile(toolPath, program);
    EXPECT_EQ(failure(), "Conversion error: Conversion error: Error processing WebM.");
    const LanguageGuard russian("ru");
    EXPECT_EQ(failure(), "Ошибка конвертации: Ошибка конвертации: Ошибка при обработке WebM.");
  }
}

TEST_F(FFmpegConverterTest, ADiskThatIsFullAfterwardsIsAFailureWhateverTheToolSays) {
  files.writeFile(toolPath, "exit 0");
  files.isFull = true;
  EXPECT_EQ(failure(), "Conversion error: Conversion error: Error processing WebM.");
}

TEST_F(FFmpegConverterTest, AResultThatIsCutShortIsAFailureWhateverTheToolSays) {
  files.writeFile(toolPath, "exit 0");
  inspector.findsCutShort = true;
  EXPECT_EQ(failure(), "Conversion error: Conversion error: Error processing WebM.");
  EXPECT_EQ(inspector.comparisons,
            (std::vector{std::pair<std::string, std::string>("/tmp/1.webm", "/w/clip.webm")}));
  const LanguageGuard russian("ru");
  EXPECT_EQ(failure(), "Ошибка конвертации: Ошибка конвертации: Ошибка при обработке WebM.");
}

TEST_F(FFmpegConverterTest, ASourceThatCannotBeReadToItsEndFailsWithTheSystemsText) {
  files.writeFile(toolPath, "exit 0");
  inspector.failure = PlatformError(EIO, "Input/output error");
  EXPECT_EQ(failure(), "Conversion error: Input/output error");
}

TEST_F(FFmpegConverterTest, AToolThatFailsIsNotLookedAfter) {
  files.writeFile(toolPath, "exit 1");
  failure();
  EXPECT_TRUE(inspector.comparisons.empty());
}

TEST_F(FFmpegConverterTest, AToolThatCannotBeStartedFailsWithTheSystemsText) {
  files.writeFile(toolPath, "no program");
  EXPECT_EQ(failure(), "Conversion error: Exec format error");
  const LanguageGuard russian("ru");
  EXPECT_EQ(failure(), "Ошибка конвертации: Exec format error");
}

TEST_F(FFmpegConverterTest, ChoosesEachTextWhenItIsNeeded) {
  files.writeFile(toolPath, "exit 1");
  const LanguageGuard english("en");
  process.whileItRuns = [] { fakeLanguageCode = "ru"; };
  EXPECT_EQ(failure(), "Ошибка конвертации: Ошибка конвертации: Error processing WebM.");
}

TEST_F(FFmpegConverterTest, LogsNothing) {
  files.writeFile(toolPath, "exit 1");
  failure();
  EXPECT_TRUE(log.entries.empty());
}

Task<void> convertAndNote(const FFmpegConverter* converter, bool* ended) {
  co_await converter->convert(FileURL("/w/a.webm"), FileURL("/tmp/1.webm"));
  *ended = true;
}

TEST_F(FFmpegConverterTest, RunsTheToolOnItsQueueAndNotOnTheCallersLoop) {
  files.writeFile(toolPath, "exit 0");
  VirtualLoop queue;
  const FFmpegConverter queued({bundle, files, process, inspector, log, queue});
  TaskScope scope(loop);
  bool ended = false;
  scope.spawn(convertAndNote(&queued, &ended));
  loop.runUntilIdle();
  EXPECT_TRUE(process.runs.empty());
  queue.runUntilIdle();
  EXPECT_EQ(process.runs.size(), 1U);
  EXPECT_FALSE(ended);
  loop.runUntilIdle();
  EXPECT_TRUE(ended);
}

}  // namespace
}  // namespace kestrivane::test

#include <gtest/gtest.h>

#include "engine/ConversionEngine.hpp"
#include "tests/support/FakeLocale.hpp"
#include "tests/unit/EngineFixture.hpp"

namespace kestrivane::test {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

class ConversionEngineFailureTest : public EngineTest {
 protected:
  static std::exception_ptr conversionFailed(const std::string& reason) {
    return std::make_exception_ptr(ConversionError::conversionFailed(reason));
  }
};

TEST_F(ConversionEngineFailureTest, AFailedConversionIsToldThenRevertedThenToldAgain) {
  const auto script = addConverter({"mp4", "webm"});
  script->failure = conversionFailed("Error processing WebM.");
  startEngine();
  rename("/w/clip.mp4", "/w/clip.webm");
  EXPECT_EQ(notifications.lines(),
            (Lines{"Conversion error: Conversion error: Error processing WebM.",
                   "Conversion error: Conversion failed. File 'clip.webm' reverted to original "
                   "extension 'mp4'."}));
  EXPECT_EQ(files.paths("/w"), Lines{"/w/clip.mp4"});
  EXPECT_EQ(files.content("/w/clip.mp4"), "content of /w/clip.mp4");
  EXPECT_EQ(statuses, std::vector{true});
  dispatch.loop.advance(500ms);
  EXPECT_EQ(statuses, (std::vector{true, false}));
}

TEST_F(ConversionEngineFailureTest, AFailureIsToldInRussianToo) {
  const LanguageGuard russian("ru");
  const auto script = addConverter({"mp4", "webm"});
  script->failure = conversionFailed("причина");
  startEngine();
  rename("/w/clip.mp4", "/w/clip.webm");
  EXPECT_EQ(notifications.lines(),
            (Lines{"Ошибка конвертации: Ошибка конвертации: причина",
                   "Ошибка конвертации: Конвертация не удалась. Файл 'clip.webm' возвращен к "
                   "исходному расширению 'mp4'."}));
}

TEST_F(ConversionEngineFailureTest, TheRevertedNameHasTheOldExtensionInLowerCase) {
  const auto script = addConverter({"png", "jpg"});
  script->failure = conversionFailed("no");
  startEngine();
  rename("/w/IMG.PNG", "/w/IMG.JPG");
  EXPECT_EQ(files.paths("/w"), Lines{"/w/IMG.png"});
  EXPECT_EQ(notifications.lines().back(),
            "Conversion error: Conversion failed. File 'IMG.JPG' reverted to original extension "
            "'png'.");
}

TEST_F(ConversionEngineFailureTest, TheNewStemIsKeptWhenTheFileIsRenamedBack) {
  const auto script = addConverter({"png", "jpg"});
  script->failure = conversionFailed("no");
  startEngine();
  rename("/w/a.png", "/w/b.c.jpg");
  EXPECT_EQ(files.paths("/w"), Lines{"/w/b.c.png"});
}

TEST_F(ConversionEngineFailureTest, AnotherErrorIsToldByItsOwnDescription) {
  const auto script = addConverter({"png", "jpg"});
  script->failure = std::make_exception_ptr(PlatformError(5, "The disk cannot be read"));
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  EXPECT_EQ(notifications.lines().front(), "Conversion error: The disk cannot be read");
}

TEST_F(ConversionEngineFailureTest,
       AFailedReplacementIsToldAndRevertedAndTheCopyStaysInTheTemporaryFolder) {
  addConverter({"png", "jpg"});
  turnSuccessNotificationsOn();
  files.replacementsFail = true;
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  EXPECT_EQ(notifications.lines(),
            (Lines{"Conversion error: The disk is full",
                   "Conversion error: Conversion failed. File 'a.jpg' reverted to original "
                   "extension 'png'."}));
  EXPECT_EQ(files.content("/w/a.png"), "content of /w/a.png");
  EXPECT_EQ(files.paths("/tmp").size(), 1U);
}

TEST_F(ConversionEngineFailureTest, WhatIsSavedUnderTheNameDuringAConversionIsNotOverwritten) {
  const auto script = addConverter({"png", "jpg"});
  script->duration = 1s;
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  files.writeFile("/w/a.jpg", "the user's newest work");
  dispatch.loop.advance(1s);
  EXPECT_EQ(notifications.lines(),
            (Lines{"Conversion error: It was changed meanwhile",
                   "Conversion error: Conversion failed. File 'a.jpg' reverted to original "
                   "extension 'png'."}));
  EXPECT_EQ(files.content("/w/a.png"), "the user's newest work");
}

TEST_F(ConversionEngineFailureTest, APartialTemporaryFileIsLeftWhereItIs) {
  const auto script = addConverter({"png", "jpg"});
  script->failure = conversionFailed("no");
  script->leavesPartialFile = true;
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  EXPECT_EQ(files.paths("/tmp").size(), 1U);
}

TEST_F(ConversionEngineFailureTest, WithoutATemporaryFolderTheFileIsRenamedBack) {
  addConverter({"png", "jpg"});
  files.temporaryDirectoryFails = true;
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  EXPECT_EQ(notifications.lines().front(), "Conversion error: There is no temporary folder");
  EXPECT_EQ(files.paths("/w"), Lines{"/w/a.png"});
}

TEST_F(ConversionEngineFailureTest, RenamingBackNeverOverwritesAndIsToldAsCritical) {
  const auto script = addConverter({"png", "jpg"});
  script->failure = conversionFailed("no");
  script->duration = 1s;
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  files.writeFile("/w/a.png", "somebody's new file");
  dispatch.loop.advance(1s);
  EXPECT_EQ(notifications.lines().back(),
            "Critical error: Could not revert file 'a.jpg' to its original extension. Please check "
            "it manually.");
  EXPECT_EQ(files.content("/w/a.png"), "somebody's new file");
  EXPECT_EQ(files.content("/w/a.jpg"), "content of /w/a.png");
  dispatch.loop.advance(500ms);
  EXPECT_EQ(statuses, (std::vector{true, false}));
}

TEST_F(ConversionEngineFailureTest, ACriticalErrorIsToldInRussianToo) {
  const LanguageGuard russian("ru");
  const auto script = addConverter({"png", "jpg"});
  script->failure = conversionFailed("no");
  files.movesFail = true;
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  EXPECT_EQ(notifications.lines().back(),
            "Критическая ошибка: Не удалось вернуть файл 'a.jpg' к исходному расширению. "
            "Пожалуйста, проверьте файл вручную.");
}

TEST_F(ConversionEngineFailureTest, AFailureHandsItsPermitBack) {
  const auto script = addConverter({"png", "jpg"});
  script->failure = conversionFailed("no");
  startEngine();
  for (int i = 0; i < 6; ++i) {
    const std::string name = "/w/" + std::to_string(i);
    rename(name + ".png", name + ".jpg");
  }
  dispatch.loop.advance(1500ms);
  EXPECT_EQ(script->sources.size(), 6U);
  EXPECT_EQ(notifications.requests.size(), 12U);
}

TEST_F(ConversionEngineFailureTest, TheEventsOfTheRenameBackConvertNothing) {
  const auto script = addConverter({"png", "jpg"});
  script->failure = conversionFailed("no");
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  dispatch.loop.advance(2s);
  EXPECT_EQ(script->sources.size(), 1U);
}

}  // namespace
}  // namespace kestrivane::test

#include <algorithm>

#include <gtest/gtest.h>

#include "engine/ConversionEngine.hpp"
#include "tests/support/FakeLocale.hpp"
#include "tests/support/UUIDForm.hpp"
#include "tests/unit/EngineFixture.hpp"

namespace kestrivane::test {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

using ConversionEngineTest = EngineTest;

TEST_F(ConversionEngineTest, ConvertsARenamedFileInPlaceAndAnnouncesIt) {
  addConverter({"png", "jpg"});
  turnSuccessNotificationsOn();
  startEngine();
  rename("/w/photo.png", "/w/photo.jpg");
  dispatch.loop.advance(500ms);
  EXPECT_EQ(files.paths("/w"), Lines{"/w/photo.jpg"});
  EXPECT_EQ(files.content("/w/photo.jpg"), "jpg of content of /w/photo.png");
  EXPECT_EQ(notifications.lines(), Lines{"File converted: Success: photo.png -> photo.jpg"});
  EXPECT_EQ(notifications.requests.front().sound, NotificationSound::standard);
  EXPECT_EQ(notifications.requests.front().identifier.size(), 36U);
  EXPECT_TRUE(files.paths("/tmp").empty());
}

TEST_F(ConversionEngineTest, AnnouncesInRussianToo) {
  const LanguageGuard russian("ru");
  addConverter({"png", "jpg"});
  turnSuccessNotificationsOn();
  startEngine();
  rename("/w/photo.png", "/w/photo.jpg");
  EXPECT_EQ(notifications.lines(), Lines{"Файл конвертирован: Успешно: photo.png -> photo.jpg"});
}

TEST_F(ConversionEngineTest, ReadsThePreferenceAtEverySuccess) {
  addConverter({"png", "jpg"});
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  EXPECT_TRUE(notifications.requests.empty());
  turnSuccessNotificationsOn();
  rename("/w/b.png", "/w/b.jpg");
  EXPECT_EQ(notifications.requests.size(), 1U);
}

TEST_F(ConversionEngineTest,
       WritesToAFreshUpperCaseUUIDWithTheTargetExtensionInTheTemporaryFolder) {
  const auto script = addConverter({"png", "jpg"});
  startEngine();
  rename("/w/a.png", "/w/a.JPG");
  ASSERT_EQ(script->destinations.size(), 1U);
  const FileURL destination(script->destinations.front());
  EXPECT_EQ(destination.deletingLastPathComponent().path(), "/tmp");
  EXPECT_EQ(destination.pathExtension(), "jpg");
  EXPECT_TRUE(isUpperCaseUUID(destination.deletingPathExtension().lastPathComponent()));
}

TEST_F(ConversionEngineTest, ReportsTheEndOfAConversionAfterHalfASecond) {
  addConverter({"png", "jpg"});
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  EXPECT_EQ(statuses, std::vector{true});
  dispatch.loop.advance(499ms);
  EXPECT_EQ(statuses, std::vector{true});
  dispatch.loop.advance(1ms);
  EXPECT_EQ(statuses, (std::vector{true, false}));
}

TEST_F(ConversionEngineTest, IgnoresEventsOfTheFileFromTheStartUntilTheEndOfThePause) {
  const auto script = addConverter({"png", "jpg", "gif"});
  script->duration = 1s;
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  const auto renamedBatch = [this] {
    files.emit({"/w/x.gif", "/w/a.jpg"}, {fileEventItemRenamed, fileEventItemRenamed});
    dispatch.loop.runUntilIdle();
  };
  renamedBatch();
  dispatch.loop.advance(1499ms);
  renamedBatch();
  EXPECT_EQ(script->sources.size(), 1U);
  dispatch.loop.advance(1ms);
  renamedBatch();
  EXPECT_EQ(script->sources.size(), 2U);
}

TEST_F(ConversionEngineTest,
       OfThreeFilesRenamedAtOnceTheThirdStartsWhenTheFirstHasSleptItsHalfSecond) {
  const auto script = addConverter({"png", "jpg"});
  script->duration = 200ms;
  startEngine();
  rename("/w/1.png", "/w/1.jpg");
  dispatch.loop.advance(100ms);
  rename("/w/2.png", "/w/2.jpg");
  rename("/w/3.png", "/w/3.jpg");
  EXPECT_EQ(script->sources, (Lines{"/w/1.jpg", "/w/2.jpg"}));
  dispatch.loop.advance(599ms);  // 0.699 s: the first is converted and sleeps
  EXPECT_EQ(files.content("/w/1.jpg"), "jpg of content of /w/1.png");
  EXPECT_EQ(script->sources.size(), 2U);
  dispatch.loop.advance(1ms);
  EXPECT_EQ(script->sources, (Lines{"/w/1.jpg", "/w/2.jpg", "/w/3.jpg"}));
}

TEST_F(ConversionEngineTest, ConvertsAllOfManyFilesRenamedAtOnceInOrder) {
  const auto script = addConverter({"png", "jpg"});
  startEngine();
  Lines expected;
  for (int i = 0; i < 20; ++i) {
    const std::string name = "/w/" + std::to_string(i);
    rename(name + ".png", name + ".jpg");
    expected.push_back(name + ".jpg");
  }
  dispatch.loop.advance(10s);
  EXPECT_EQ(script->sources, expected);
  EXPECT_EQ(std::ranges::count(statuses, true), 20);
  EXPECT_EQ(std::ranges::count(statuses, false), 20);
}

TEST_F(ConversionEngineTest, AFileWithoutAConverterIsLeftAloneWithoutAWord) {
  addConverter({"png", "jpg"});
  startEngine();
  rename("/w/a.png", "/w/a.txt");
  dispatch.loop.advance(10s);
  EXPECT_TRUE(statuses.empty());
  EXPECT_TRUE(notifications.requests.empty());
  EXPECT_EQ(files.content("/w/a.txt"), "content of /w/a.png");
  EXPECT_FALSE(files.content("/w/a.png"));
}

TEST_F(ConversionEngineTest, AFileWithoutAConverterHandsItsPermitBackAtOnce) {
  const auto script = addConverter({"png", "jpg"});
  startEngine();
  for (int i = 0; i < 5; ++i)
    rename("/w/a.png", "/w/a.txt");
  rename("/w/b.png", "/w/b.jpg");
  EXPECT_EQ(script->sources, Lines{"/w/b.jpg"});
}

TEST_F(ConversionEngineTest, AsksForThePermissionToShowAlertsAndPlaySoundsWhateverTheAnswer) {
  EXPECT_EQ(notifications.authorizationRequests,
            std::vector<std::uint32_t>{authorizationAlert | authorizationSound});
  notifications.grants = false;
  notifications.failure = std::make_exception_ptr(PlatformError(1, "no"));
  EXPECT_NO_THROW(
      ConversionEngine::create(monitor, 2, {files, notifications, defaults, log, dispatch}));
}

TEST_F(ConversionEngineTest, WorksWithoutAStatusCallback) {
  engine->onStatusChange = nullptr;
  addConverter({"png", "jpg"});
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  dispatch.loop.advance(1s);
  EXPECT_EQ(files.content("/w/a.jpg"), "jpg of content of /w/a.png");
}

TEST_F(ConversionEngineTest, StopEndsTheLoopAfterTheConversionsUnderWay) {
  const auto script = addConverter({"png", "jpg"});
  script->duration = 1s;
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  engine->stop();
  dispatch.loop.runUntilIdle();
  EXPECT_FALSE(finished);
  dispatch.loop.advance(1500ms);
  EXPECT_TRUE(finished);
  EXPECT_EQ(files.content("/w/a.jpg"), "jpg of content of /w/a.png");
}

TEST_F(ConversionEngineTest, StopLetsTheEventsAlreadyQueuedBeConverted) {
  addConverter({"png", "jpg"});
  startEngine();
  for (const std::string name : {"/w/1", "/w/2", "/w/3"})
    rename(name + ".png", name + ".jpg");
  engine->stop();
  dispatch.loop.advance(2s);
  EXPECT_TRUE(finished);
  EXPECT_EQ(files.content("/w/3.jpg"), "jpg of content of /w/3.png");
}

TEST_F(ConversionEngineTest, CancellingItsTaskInterruptsThePauseAndStillReportsTheEnd) {
  addConverter({"png", "jpg"});
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  EXPECT_EQ(statuses, std::vector{true});
  task.cancel();
  dispatch.loop.runUntilIdle();
  EXPECT_EQ(statuses, (std::vector{true, false}));
  EXPECT_TRUE(finished);
}

TEST_F(ConversionEngineTest, CancellingItsTaskHandsThePermitsBackToTheFilesThatWait) {
  const auto script = addConverter({"png", "jpg"});
  startEngine();
  for (const std::string name : {"/w/1", "/w/2", "/w/3", "/w/4"}) {
    rename(name + ".png", name + ".jpg");
  }
  EXPECT_EQ(script->sources.size(), 2U);
  task.cancel();
  dispatch.loop.runUntilIdle();
  EXPECT_EQ(script->sources.size(), 4U);
  EXPECT_TRUE(finished);
}

TEST_F(ConversionEngineTest, AConversionUnderWayKeepsTheEngineAlive) {
  const auto script = addConverter({"png", "jpg"});
  script->duration = 1s;
  turnSuccessNotificationsOn();
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  const std::weak_ptr<ConversionEngine> weak = engine;
  engine->stop();
  engine.reset();
  dispatch.loop.runUntilIdle();
  EXPECT_FALSE(weak.expired());
  dispatch.loop.advance(2s);
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(notifications.requests.size(), 1U);
}

TEST_F(ConversionEngineTest, NoFrameLeaksWhenTheEngineGoesWhileConversionsWait) {
  const auto script = addConverter({"png", "jpg"});
  script->duration = 1h;
  const std::weak_ptr<ConversionEngine> weak = engine;
  {
    TaskScope doomed(dispatch.loop);
    doomed.spawn(runEngine(engine, &finished));
    dispatch.loop.runUntilIdle();
    for (const std::string name : {"/w/1", "/w/2", "/w/3"})
      rename(name + ".png", name + ".jpg");
    EXPECT_EQ(script->sources.size(), 2U);
    engine.reset();
    EXPECT_FALSE(weak.expired());
  }
  EXPECT_TRUE(weak.expired());
  dispatch.loop.advance(2h);
  EXPECT_FALSE(finished);
}

TEST_F(ConversionEngineTest, WritesNothingToTheLog) {
  addConverter({"png", "jpg"});
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  dispatch.loop.advance(1s);
  for (const LogEntry& entry : log.entries)
    EXPECT_NE(entry.category, "ConversionEngine");
}

}  // namespace
}  // namespace kestrivane::test

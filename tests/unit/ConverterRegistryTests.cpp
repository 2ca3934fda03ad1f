#include <gtest/gtest.h>

#include "tests/unit/EngineFixture.hpp"

namespace kestrivane::test {
namespace {

using ConverterRegistryTest = EngineTest;

TEST_F(ConverterRegistryTest, UpperCaseExtensionsAreLookedUpInLowerCase) {
  const auto images = addConverter({"png", "jpg"});
  startEngine();
  rename("/w/a.PNG", "/w/a.JPG");
  EXPECT_EQ(images->questions, (std::vector<std::pair<std::string, std::string>>{{"png", "jpg"}}));
  EXPECT_EQ(images->sources, std::vector<std::string>{"/w/a.JPG"});
}

TEST_F(ConverterRegistryTest,
       WithoutAnAcceptingConverterTheFileKeepsItsNewNameAndNothingIsReported) {
  addConverter({"png", "jpg"});
  startEngine();
  rename("/w/a.txt", "/w/a.jpg");
  dispatch.loop.advance(std::chrono::seconds(2));
  EXPECT_EQ(files.content("/w/a.jpg"), "content of /w/a.txt");
  EXPECT_TRUE(notifications.requests.empty());
  EXPECT_TRUE(statuses.empty());
}

TEST_F(ConverterRegistryTest, TheFirstAcceptingConverterInOrderOfRegistrationIsUsed) {
  const auto images = addConverter({"png", "jpg"});
  const auto videos = addConverter({"mov", "mp4"});
  const auto tool = addConverter({"mov", "webm"});
  const auto toolAgain = addConverter({"mov", "webm"});
  startEngine();
  rename("/w/clip.mov", "/w/clip.webm");
  EXPECT_TRUE(images->sources.empty());
  EXPECT_TRUE(videos->sources.empty());
  EXPECT_EQ(tool->sources, std::vector<std::string>{"/w/clip.webm"});
  EXPECT_TRUE(toolAgain->questions.empty());
}

TEST_F(ConverterRegistryTest, AnEngineWithoutConvertersNeverConvertsAnything) {
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  EXPECT_EQ(files.content("/w/a.jpg"), "content of /w/a.png");
  EXPECT_TRUE(statuses.empty());
}

TEST_F(ConverterRegistryTest, ALaterRegistrationIsSeenByTheNextLookUp) {
  startEngine();
  rename("/w/a.png", "/w/a.jpg");
  const auto images = addConverter({"png", "jpg"});
  rename("/w/b.png", "/w/b.jpg");
  EXPECT_EQ(images->sources, std::vector<std::string>{"/w/b.jpg"});
}

}  // namespace
}  // namespace kestrivane::test

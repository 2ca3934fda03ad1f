// What the view model and its engines do together when files are renamed.

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/ConversionError.hpp"
#include "state/AppViewModel.hpp"
#include "tests/unit/AppViewModelFixture.hpp"

namespace kestrivane::test {
namespace {

using namespace std::chrono_literals;

using AppViewModelConversionTest = ViewModelFixture;

TEST_F(AppViewModelConversionTest, RegistersTheConvertersInTheirOrderForEveryEngine) {
  make();
  settle();
  add({"/a", "/b"});
  EXPECT_EQ(enginesEquipped, 2);
  rename("/a/x.one", "/a/x.two");
  EXPECT_EQ(asked, (Lines{"first", "second"}));
}

TEST_F(AppViewModelConversionTest, ConvertsNoMoreThanTwoFilesOfAFolderAtOnce) {
  script->duration = 1s;
  make();
  settle();
  add({"/a", "/b"});
  for (const char* const name : {"/a/1", "/a/2", "/a/3", "/b/1"})
    rename(std::string(name) + ".png", std::string(name) + ".jpg");
  EXPECT_EQ(script->sources, (Lines{"/a/1.jpg", "/a/2.jpg", "/b/1.jpg"}));
  EXPECT_EQ(model->activeConversionCount(), 3);
  dispatch.loop.advance(5s);
  EXPECT_EQ(script->sources.size(), 4U);
  EXPECT_EQ(model->activeConversionCount(), 0);
}

TEST_F(AppViewModelConversionTest, IsProcessingFromTheFirstStartToTheLastEnd) {
  make();
  std::vector<bool> seen;
  const Subscription subscription =
      model->isProcessing().subscribe([&seen](bool value) { seen.push_back(value); });
  model->handleStatusChange(true);
  model->handleStatusChange(true);
  EXPECT_EQ(model->activeConversionCount(), 2);
  for (int i = 0; i < 3; ++i)
    model->handleStatusChange(false);
  EXPECT_EQ(model->activeConversionCount(), 0);
  EXPECT_FALSE(model->isProcessing().value());
  // One notice for each report, whether or not it changes anything.
  EXPECT_EQ(seen, (std::vector{false, true, true, true, false, false}));
}

TEST_F(AppViewModelConversionTest, HearsOfConversionsOnTheMainLoopAsLongAsItLives) {
  script->duration = 1s;
  make();
  settle();
  add({"/a"});
  rename("/a/photo.png", "/a/photo.jpg");
  EXPECT_TRUE(model->isProcessing().value());
  dispatch.loop.advance(1s);
  EXPECT_TRUE(model->isProcessing().value());
  dispatch.loop.advance(500ms);
  EXPECT_FALSE(model->isProcessing().value());

  rename("/a/photo.jpg", "/a/photo.png");
  model.reset();
  dispatch.loop.advance(2s);
  EXPECT_EQ(files.content("/a/photo.png"), "png of jpg of content");
}

TEST_F(AppViewModelConversionTest, LetsAConversionUnderWayFinishWhenItsFolderIsRemoved) {
  script->duration = 1s;
  make();
  settle();
  add({"/a"});
  rename("/a/photo.png", "/a/photo.jpg");
  model->removeFolder(0);
  dispatch.loop.advance(2s);
  EXPECT_EQ(files.content("/a/photo.jpg"), "jpg of content");
  EXPECT_EQ(model->activeConversionCount(), 0);
  EXPECT_TRUE(tasks.empty());
}

TEST_F(AppViewModelConversionTest, AnnouncesSuccessesUnlessToldNotTo) {
  make();
  settle();
  add({"/a"});
  EXPECT_TRUE(model->showSuccessNotifications().value());
  EXPECT_TRUE(defaults.stored.empty());
  rename("/a/1.png", "/a/1.jpg");
  EXPECT_EQ(notifications.requests.size(), 1U);

  model->setShowSuccessNotifications(false);
  EXPECT_FALSE(model->showSuccessNotifications().value());
  rename("/a/2.png", "/a/2.jpg");
  EXPECT_EQ(notifications.requests.size(), 1U);

  make();  // the next start
  EXPECT_FALSE(model->showSuccessNotifications().value());
  model->setShowSuccessNotifications(true);
  EXPECT_EQ(defaults.stored.at("showSuccessNotifications"), true);
}

TEST_F(AppViewModelConversionTest, ConvertsAFileInOverlappingFoldersOnce) {
  files.createDirectory("/a/inner");
  files.link("/link", "/a/inner");
  files.createDirectory("/link");
  make();
  settle();
  add({"/a/inner", "/a", "/link"});
  EXPECT_EQ(folders().size(), 3U);
  rename("/a/inner/photo.png", "/a/inner/photo.jpg");
  rename("/a/photo.png", "/a/photo.jpg");
  dispatch.loop.advance(2s);
  EXPECT_EQ(script->sources, (Lines{"/a/inner/photo.jpg", "/a/photo.jpg"}));

  // The outer folder goes on with what the inner one did.
  model->removeFolder(0);
  settle();
  rename("/a/inner/next.png", "/a/inner/next.jpg");
  EXPECT_EQ(script->sources.back(), "/a/inner/next.jpg");
  EXPECT_EQ(script->sources.size(), 3U);
}

TEST_F(AppViewModelConversionTest, TakesARenameBackForNoRenameOfTheUsers) {
  files.createDirectory("/a/inner");
  make();
  settle();
  add({"/a/inner", "/a"});
  script->failure = std::make_exception_ptr(ConversionError::conversionFailed("as scripted"));
  // Only the outer folder sees both names; the inner one sees the rename back.
  files.writeFile("/a/photo.png", "content");
  files.rename("/a/photo.png", "/a/inner/photo.jpg");
  dispatch.loop.advance(2s);
  EXPECT_EQ(files.content("/a/inner/photo.png"), "content");
  EXPECT_EQ(script->sources, Lines{"/a/inner/photo.jpg"});
}

}  // namespace
}  // namespace kestrivane::test

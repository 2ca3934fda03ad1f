#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "state/AppViewModel.hpp"
#include "tests/support/FakeLocale.hpp"
#include "tests/unit/AppViewModelFixture.hpp"

namespace kestrivane::test {
namespace {

using AppViewModelTest = ViewModelFixture;
using AppViewModelDeathTest = ViewModelFixture;

TEST_F(AppViewModelTest, TouchesNoFolderBeforeTheNextTurnOfTheLoop) {
  save({"/a"});
  const auto& viewModel = make();
  EXPECT_TRUE(files.existenceQueries.empty());
  EXPECT_TRUE(bookmarks.accesses.empty());
  EXPECT_TRUE(viewModel.monitoredFolders().value().empty());
  settle();
  EXPECT_EQ(folders(), Lines{"/a"});
}

TEST_F(AppViewModelTest, IsNotRestoredOnceItIsGone) {
  save({"/a"});
  make();
  model.reset();
  settle();
  EXPECT_TRUE(bookmarks.accesses.empty());
}

TEST_F(AppViewModelTest, RestoresTheSavedFoldersInTheirOrderWithoutSavingThem) {
  save({"/b", "/gone", "/a"});
  make();
  settle();
  EXPECT_EQ(folders(), (Lines{"/b", "/a"}));
  EXPECT_EQ(watched(), (Lines{"/b", "/a"}));
  EXPECT_TRUE(defaults.writes.empty());
  EXPECT_EQ(saved(), (Lines{"/b", "/gone", "/a"}));
}

TEST_F(AppViewModelTest, RestoresAFolderThatIsSavedTwiceOnce) {
  save({"/a", "/a"});
  make();
  settle();
  EXPECT_EQ(folders(), Lines{"/a"});
  EXPECT_EQ(watched(), Lines{"/a"});
}

TEST_F(AppViewModelTest, AddsExistingDirectoriesAndSavesTheList) {
  make();
  settle();
  add({"/b", "/a"});
  EXPECT_EQ(folders(), (Lines{"/b", "/a"}));
  EXPECT_EQ(watched(), (Lines{"/b", "/a"}));
  EXPECT_EQ(saved(), (Lines{"/b", "/a"}));
  EXPECT_EQ(defaults.writes.size(), 1U);
  EXPECT_TRUE(bookmarks.accesses.empty());
}

TEST_F(AppViewModelTest, AddsAFolderOnceHoweverOftenItIsNamedAndSavesEachTime) {
  make();
  settle();
  add({"/a", "/a"});
  add({"/a"});
  EXPECT_EQ(folders(), Lines{"/a"});
  EXPECT_EQ(watched(), Lines{"/a"});
  EXPECT_EQ(defaults.writes.size(), 2U);
}

TEST_F(AppViewModelTest, SkipsWhatIsNoDirectoryAndStillSaves) {
  files.writeFile("/file", "x");
  make();
  settle();
  add({"/file", "/nowhere"});
  EXPECT_TRUE(folders().empty());
  EXPECT_EQ(defaults.writes.size(), 1U);
  EXPECT_EQ(saved(), Lines{});
  EXPECT_TRUE(log.entries.empty());
}

TEST_F(AppViewModelTest, TakesTwoSpellingsForTwoFolders) {
  make();
  settle();
  files.createDirectory("/a/");
  add({"/a", "/a/"});
  EXPECT_EQ(folders(), (Lines{"/a", "/a/"}));
}

TEST_F(AppViewModelTest, ShowsAPanelForSeveralFoldersAndAddsWhatWasChosen) {
  make();
  settle();
  panel.answer = {.response = ModalResponse::ok, .urls = {FileURL("/b"), FileURL("/a")}};
  model->selectFolders();
  ASSERT_EQ(panel.configurations.size(), 1U);
  const OpenPanelConfiguration& shown = panel.configurations.front();
  EXPECT_FALSE(shown.canChooseFiles);
  EXPECT_TRUE(shown.canChooseDirectories);
  EXPECT_TRUE(shown.allowsMultipleSelection);
  EXPECT_EQ(shown.prompt, "Add folders");
  EXPECT_EQ(folders(), (Lines{"/b", "/a"}));
}

TEST_F(AppViewModelTest, NamesThePanelsButtonInTheUsersLanguage) {
  make();
  for (const auto& [language, prompt] :
       {std::pair("ru", "Добавить папки"), std::pair("en", "Add folders"),
        std::pair("de", "Add folders")}) {
    const LanguageGuard guard(language);
    model->selectFolders();
    EXPECT_EQ(panel.configurations.back().prompt, prompt);
  }
}

TEST_F(AppViewModelTest, AddsAndSavesNothingWhenThePanelIsCancelled) {
  make();
  settle();
  panel.answer = {.response = ModalResponse::cancel, .urls = {FileURL("/a")}};
  model->selectFolders();
  EXPECT_TRUE(folders().empty());
  EXPECT_TRUE(defaults.writes.empty());
}

TEST_F(AppViewModelTest, RemovesAFolderStopsItsAccessAndSavesTheRest) {
  save({"/a", "/b", "/c"});
  make();
  settle();
  model->removeFolder(1);
  settle();
  EXPECT_EQ(folders(), (Lines{"/a", "/c"}));
  EXPECT_FALSE(model->isMonitored(FileURL("/b")));
  EXPECT_EQ(bookmarks.accesses.back(), "stop /b");
  EXPECT_EQ(saved(), (Lines{"/a", "/c"}));
  EXPECT_EQ(log.messages(LogLevel::info).back(), "Остановлен мониторинг папки: /b");
}

TEST_F(AppViewModelTest, StopsTheAccessBeforeItSaves) {
  save({"/a"});
  make();
  settle();
  std::vector<std::size_t> writesAtStop;
  defaults.onWrite = [&] { writesAtStop.push_back(bookmarks.accesses.size()); };
  model->removeFolder(0);
  EXPECT_EQ(bookmarks.accesses, (Lines{"start /a", "stop /a"}));
  EXPECT_EQ(writesAtStop, std::vector<std::size_t>{2});
}

TEST_F(AppViewModelTest, StoresAnEmptyArrayOnceTheLastFolderIsRemoved) {
  make();
  settle();
  add({"/a"});
  model->removeFolder(0);
  EXPECT_EQ(saved(), Lines{});
  EXPECT_TRUE(defaults.storedArrays.contains(std::string(BookmarkManager::userDefaultsKey)));
}

TEST_F(AppViewModelDeathTest, EndsTheProgramForAnIndexOutsideOfTheList) {
  make();
  settle();
  add({"/a"});
  EXPECT_DEATH(model->removeFolder(1), "");
}

TEST_F(AppViewModelTest, ForgetsAnEngineThatIsStoppedBeforeItCouldStart) {
  make();
  settle();
  model->addFolders({FileURL("/a")});
  model->removeFolder(0);
  settle();
  EXPECT_TRUE(tasks.empty());
  rename("/a/photo.png", "/a/photo.jpg");
  EXPECT_TRUE(script->sources.empty());
}

TEST_F(AppViewModelTest, StopsEveryEngineAndStartsThemAgainWithoutDuplicates) {
  save({"/a", "/b"});
  make();
  settle();
  model->stopAllMonitoring();
  settle();
  EXPECT_EQ(folders(), (Lines{"/a", "/b"}));
  EXPECT_EQ(saved(), (Lines{"/a", "/b"}));
  EXPECT_FALSE(model->isMonitored(FileURL("/a")));
  EXPECT_TRUE(tasks.empty());
  EXPECT_EQ(bookmarks.accesses, (Lines{"start /a", "start /b"}));
  rename("/a/photo.png", "/a/photo.jpg");
  EXPECT_TRUE(script->sources.empty());

  model->loadSavedFolders();
  settle();
  EXPECT_EQ(folders(), (Lines{"/a", "/b"}));
  EXPECT_EQ(watched(), (Lines{"/a", "/b", "/a", "/b"}));
  rename("/a/other.png", "/a/other.jpg");
  EXPECT_EQ(script->sources, Lines{"/a/other.jpg"});
}

TEST_F(AppViewModelTest, StopsOnlyTheEngineThatItIsAskedToStop) {
  make();
  settle();
  add({"/a", "/b"});
  model->stopMonitoring(FileURL("/a"));
  model->stopMonitoring(FileURL("/a"));
  model->stopMonitoring(FileURL("/nowhere"));
  settle();
  EXPECT_FALSE(model->isMonitored(FileURL("/a")));
  EXPECT_TRUE(model->isMonitored(FileURL("/b")));
  EXPECT_EQ(folders(), (Lines{"/a", "/b"}));
}

TEST_F(AppViewModelTest, TellsObserversOfTheChoiceBeforeItIsStored) {
  make();
  std::vector<std::size_t> writesWhenTold;
  const Subscription subscription = model->showSuccessNotifications().subscribe(
      [&](bool) { writesWhenTold.push_back(defaults.writes.size()); });
  model->setShowSuccessNotifications(false);
  model->setShowSuccessNotifications(false);
  EXPECT_EQ(writesWhenTold, (std::vector<std::size_t>{0, 0, 1}));
  EXPECT_EQ(defaults.writes.size(), 2U);
}

TEST_F(AppViewModelTest, TellsObserversOfEveryChangeOfTheList) {
  make();
  settle();
  std::vector<std::size_t> sizes;
  const Subscription subscription = model->monitoredFolders().subscribe(
      [&sizes](const auto& list) { sizes.push_back(list.size()); });
  add({"/a", "/b", "/nowhere"});
  model->removeFolder(0);
  EXPECT_EQ(sizes, (std::vector<std::size_t>{0, 1, 2, 1}));
}

}  // namespace
}  // namespace kestrivane::test

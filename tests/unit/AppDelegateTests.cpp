#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/AppDelegate.hpp"
#include "tests/support/FakeBookmarks.hpp"
#include "tests/support/FakeDesktop.hpp"
#include "tests/support/FakeDispatch.hpp"
#include "tests/support/FakeLog.hpp"
#include "tests/support/FakeNotificationCenter.hpp"
#include "tests/support/FakeOpenPanel.hpp"
#include "tests/support/FakeUserDefaults.hpp"
#include "tests/support/InMemoryFileSystem.hpp"

namespace kestrivane::test {
namespace {

class AppDelegateTest : public testing::Test {
 protected:
  void launch() {
    delegate->applicationDidFinishLaunching();
    dispatch.loop.runUntilIdle();
  }

  void startConversion() { viewModel->handleStatusChange(true); }
  void endConversion() { viewModel->handleStatusChange(false); }

  std::vector<std::string> folders() const {
    std::vector<std::string> paths;
    for (const FileURL& url : viewModel->monitoredFolders().value())
      paths.push_back(url.path());
    return paths;
  }

  std::string imageName() const {
    return statusBar.button.image ? statusBar.button.image->name : "none";
  }

  Journal journal;
  FakeApplication application{journal};
  FakeStatusBar statusBar{journal};
  FakeStatusBarButton& button = statusBar.button;
  FakePopover popover{journal};
  FakeUpdater updater{journal};

  FakeDispatch dispatch;
  FakeLog log;
  FakeUserDefaults defaults;
  FakeNotificationCenter notifications;
  FakeOpenPanel openPanel;
  InMemoryFileSystem files;
  FakeBookmarks bookmarks{files};
  TaskScope scope{dispatch.loop};
  std::shared_ptr<AppViewModel> viewModel = AppViewModel::create(
      {files, files, notifications, defaults, bookmarks, openPanel, log, dispatch, scope},
      [] { return std::vector<std::shared_ptr<const FileConverter>>(); });
  std::unique_ptr<AppDelegate> delegate = std::make_unique<AppDelegate>(
      AppDelegate::Services{application, notifications, popover, statusBar, updater}, viewModel);
};

TEST_F(AppDelegateTest, TheUpdaterStartsAsSoonAsTheDelegateExists) {
  EXPECT_EQ(journal, Journal{"updater"});
}

TEST_F(AppDelegateTest, LaunchesInOrder) {
  launch();
  EXPECT_EQ(journal,
            (Journal{"updater", "activation policy", "content size", "behaviour", "status item",
                     "image menubar-icon", "action", "drop target", "image menubar-icon"}));
}

TEST_F(AppDelegateTest, LaunchesWithoutAnIconAmongTheApplicationsAndWithoutAWindow) {
  launch();
  EXPECT_EQ(application.policy, ActivationPolicy::accessory);
  EXPECT_FALSE(popover.isShown());
  EXPECT_EQ(imageName(), "menubar-icon");
}

TEST_F(AppDelegateTest, AsksForPermissionToShowAlertsAndPlaySounds) {
  launch();
  EXPECT_EQ(notifications.authorizationRequests, std::vector<std::uint32_t>{6});
}

TEST_F(AppDelegateTest, DeniedPermissionHindersNothing) {
  notifications.grants = false;
  launch();
  EXPECT_EQ(imageName(), "menubar-icon");
}

TEST_F(AppDelegateTest, ThePopoverHasItsSizeAndClosesByAClickOutside) {
  launch();
  EXPECT_EQ(popover.contentSize, (PopoverSize{.width = 360, .height = 540}));
  EXPECT_EQ(popover.behavior, PopoverBehavior::transient);
}

TEST_F(AppDelegateTest, TheIdleIconIsTheProgramsOwnTintedInASquareOf18Points) {
  launch();
  EXPECT_EQ(button.image, (StatusImage{.source = StatusImage::Source::asset,
                                       .name = "menubar-icon",
                                       .accessibilityDescription = "",
                                       .rendering = StatusImage::Rendering::tinted,
                                       .side = 18}));
  EXPECT_EQ(button.alpha, 1.0);
}

TEST_F(AppDelegateTest, TheBusyIconIsTheArrowsAtHalfOpacity) {
  launch();
  startConversion();
  EXPECT_EQ(button.image, (StatusImage{.source = StatusImage::Source::symbol,
                                       .name = "arrow.triangle.2.circlepath",
                                       .accessibilityDescription = "Processing",
                                       .rendering = StatusImage::Rendering::original,
                                       .side = {}}));
  EXPECT_EQ(button.alpha, 0.5);
}

TEST_F(AppDelegateTest, TheIconIsIdleAgainWhenTheLastConversionEnds) {
  launch();
  startConversion();
  startConversion();
  endConversion();
  EXPECT_EQ(imageName(), "arrow.triangle.2.circlepath");
  endConversion();
  EXPECT_EQ(imageName(), "menubar-icon");
  EXPECT_EQ(button.alpha, 1.0);
}

TEST_F(AppDelegateTest, AConversionThatRunsAtLaunchIsShown) {
  startConversion();
  launch();
  EXPECT_EQ(imageName(), "arrow.triangle.2.circlepath");
}

TEST_F(AppDelegateTest, AMissingIconLeavesTheImageAsItWasAtFullOpacity) {
  button.missingAssets = {"menubar-icon"};
  launch();
  EXPECT_EQ(imageName(), "none");
  EXPECT_EQ(button.alpha, 1.0);
  startConversion();
  endConversion();
  EXPECT_EQ(imageName(), "arrow.triangle.2.circlepath");
  EXPECT_EQ(button.alpha, 1.0);
}

TEST_F(AppDelegateTest, AClickOpensThePopoverBesideTheButtonWithTheKeyboardInIt) {
  launch();
  button.action();
  EXPECT_EQ(popover.anchor, &button);
  EXPECT_TRUE(popover.isKey);
}

TEST_F(AppDelegateTest, AClickWhileThePopoverIsOpenClosesIt) {
  launch();
  button.action();
  button.action();
  EXPECT_FALSE(popover.isShown());
  button.action();
  EXPECT_TRUE(popover.isShown());
}

TEST_F(AppDelegateTest, OpeningAnOpenPopoverLeavesItOpen) {
  launch();
  delegate->openPopover();
  delegate->openPopover();
  EXPECT_TRUE(popover.isShown());
  EXPECT_EQ(std::ranges::count(journal, "show"), 1);
}

TEST_F(AppDelegateTest, NothingHappensBeforeTheLaunch) {
  delegate->togglePopover();
  delegate->updateStatusIcon(true);
  startConversion();
  EXPECT_FALSE(popover.isShown());
  EXPECT_EQ(imageName(), "none");
}

TEST_F(AppDelegateTest, AnItemWithoutAButtonIsLeftAlone) {
  statusBar.itemsHaveButtons = false;
  launch();
  delegate->togglePopover();
  startConversion();
  EXPECT_FALSE(popover.isShown());
  EXPECT_EQ(imageName(), "none");
  EXPECT_EQ(button.action, nullptr);
  EXPECT_EQ(button.dropTarget, nullptr);
}

TEST_F(AppDelegateTest, ADragOverTheIconShowsThePlusAndLeavingRestoresTheIcon) {
  launch();
  button.dropTarget->draggingEntered();
  EXPECT_EQ(button.image, (StatusImage{.source = StatusImage::Source::symbol,
                                       .name = "plus.circle.fill",
                                       .accessibilityDescription = "Drop Folders",
                                       .rendering = StatusImage::Rendering::tinted,
                                       .side = {}}));
  EXPECT_EQ(button.alpha, 1.0);
  button.dropTarget->draggingExited();
  EXPECT_EQ(imageName(), "menubar-icon");
}

TEST_F(AppDelegateTest, ADragDuringAConversionLeavesTheOpacityAsItIs) {
  launch();
  startConversion();
  button.dropTarget->draggingEntered();
  EXPECT_EQ(imageName(), "plus.circle.fill");
  EXPECT_EQ(button.alpha, 0.5);
  button.dropTarget->draggingExited();
  EXPECT_EQ(imageName(), "arrow.triangle.2.circlepath");
  EXPECT_EQ(button.alpha, 0.5);
}

TEST_F(AppDelegateTest, AfterADragTheIconFollowsThePresentStateNotTheOneBeforeIt) {
  launch();
  startConversion();
  button.dropTarget->draggingEntered();
  endConversion();
  button.dropTarget->draggingExited();
  EXPECT_EQ(imageName(), "menubar-icon");
  EXPECT_EQ(button.alpha, 1.0);
}

TEST_F(AppDelegateTest, DroppedFoldersAreWatchedWhileThePopoverIsClosed) {
  files.createDirectory("/a");
  files.createDirectory("/b");
  files.writeFile("/photo.png", "");
  launch();
  button.dropTarget->draggingEntered();
  EXPECT_TRUE(button.dropTarget->performDragOperation([] {
    return std::vector{FileURL("/b"), FileURL("/photo.png"), FileURL("/a")};
  }));
  EXPECT_EQ(folders(), (std::vector<std::string>{"/b", "/a"}));
  EXPECT_EQ(imageName(), "menubar-icon");
  EXPECT_FALSE(popover.isShown());
}

TEST_F(AppDelegateTest, NothingCallsBackOnceItIsGone) {
  launch();
  delegate.reset();
  EXPECT_EQ(button.action, nullptr);
  EXPECT_EQ(button.dropTarget, nullptr);
  startConversion();
  EXPECT_EQ(imageName(), "menubar-icon");
}

}  // namespace
}  // namespace kestrivane::test

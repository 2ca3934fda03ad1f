#include <chrono>

#include <gtest/gtest.h>

#include "app/Quitting.hpp"
#include "tests/support/FakeDesktop.hpp"
#include "tests/unit/AppViewModelFixture.hpp"

namespace kestrivane::test {
namespace {

using namespace std::chrono_literals;

Task<void> conversion() {
  co_await sleepFor(1h);
}

class QuittingTest : public ViewModelFixture {
 protected:
  QuittingTest() {
    settle();
    popover.showRelativeTo(button);
    journal.clear();
  }

  /// A task that goes on although it is asked to end, as an engine with a conversion under way
  /// does.
  void startConversion() {
    tasks.spawn(conversion());
    settle();
  }

  void quit() {
    quitting.quit();
    settle();
  }

  Journal journal;
  FakeApplication application{journal};
  FakePopover popover{journal};
  FakeStatusBarButton button{journal};
  Quitting quitting{{application, popover, make(), dispatch.loop, tasks}};
};

TEST_F(QuittingTest, ClosesThePopoverAndTerminates) {
  quit();
  EXPECT_EQ(journal, (Journal{"close", "terminate"}));
}

TEST_F(QuittingTest, StopsEveryEngineBeforeItTerminates) {
  add({"/a", "/b"});
  quit();
  EXPECT_TRUE(tasks.empty());
  EXPECT_EQ(journal, (Journal{"close", "terminate"}));
  EXPECT_EQ(saved(), (Lines{"/a", "/b"}));
}

TEST_F(QuittingTest, LetsTheConversionsUnderWayFinish) {
  startConversion();
  quit();
  dispatch.loop.advance(59min);
  EXPECT_EQ(journal, Journal{"close"});
  dispatch.loop.advance(1min);
  EXPECT_EQ(journal, (Journal{"close", "terminate"}));
}

TEST_F(QuittingTest, TerminatesAtOnceWhenItIsAskedForAgain) {
  startConversion();
  quit();
  ASSERT_EQ(journal, Journal{"close"});
  quit();
  EXPECT_EQ(journal, (Journal{"close", "terminate"}));
}

TEST_F(QuittingTest, LeavesConversionsUnderWayOnlyWhenItIsAskedForAgain) {
  startConversion();
  quit();
  EXPECT_TRUE(quitting.leavesConversions());
  dispatch.loop.advance(1h);
  EXPECT_FALSE(quitting.leavesConversions());
}

TEST_F(QuittingTest, LeavesNoConversionsWhenThereAreNone) {
  add({"/a"});
  quit();
  EXPECT_FALSE(quitting.leavesConversions());
}

TEST_F(QuittingTest, DoesNotWatchWhatIsAddedMeanwhile) {
  startConversion();
  quit();
  add({"/a"});
  save({"/a", "/b"});
  model->followSavedFolders();
  settle();
  EXPECT_EQ(folders(), (Lines{"/a", "/b"}));
  for (const FileURL& url : model->monitoredFolders().value())
    EXPECT_FALSE(model->isMonitored(url)) << url.path();
  EXPECT_EQ(journal, Journal{"close"});
  dispatch.loop.advance(1h);
  EXPECT_EQ(journal, (Journal{"close", "terminate"}));
}

}  // namespace
}  // namespace kestrivane::test

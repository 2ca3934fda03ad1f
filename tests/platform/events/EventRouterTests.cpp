#include <future>
#include <mutex>
#include <utility>

#include <gtest/gtest.h>

#include "platform/linux/events/EventRouter.hpp"
#include "tests/platform/events/WatchFixture.hpp"

namespace kestrivane::test {
namespace {

class EventRouterTest : public WatchFixture {
 protected:
  /// Watches the folder and hands in the end of the walk.
  void watchFolder() {
    router.addStream(1, {.paths = {folder.path()}, .flags = streamFlags}, nullptr, nullptr);
    router.walkFinished(walked.get_future().get());
  }

  /// Hands in what the kernel has queued; false when that is nothing.
  bool handleQueued() {
    const std::vector<RawEvent>& events = inotify->read();
    for (const RawEvent& event : events)
      router.handle(event, {});
    return !events.empty();
  }

  std::unique_ptr<Inotify> inotify = Inotify::create();
  FakeLog routerLog;
  std::unique_ptr<Logger> logger = routerLog.makeLogger(logSubsystem, "EventRouter");
  WatchingObserver onWatching;
  std::promise<std::shared_ptr<Walk>> walked;
  std::once_flag first;  // later walks look again at what was renamed
  EventRouter router{*inotify, *logger, onWatching, [this](std::shared_ptr<Walk> walk) {
                       std::call_once(first, [&] { walked.set_value(std::move(walk)); });
                     }};
};

// Its thread sleeps when it is not busy, and only what happens next would wake it.
TEST_F(EventRouterTest, IsBusyUntilAWalkThatEndedIsSettled) {
  watchFolder();
  EXPECT_TRUE(router.isBusy());
  router.queueDrained({});
  EXPECT_FALSE(router.isBusy());
}

TEST_F(EventRouterTest, IsBusyUntilWhatWasRenamedIsSettled) {
  makeDirectories("a/b");
  watchFolder();
  router.queueDrained({});
  move("a/b", "a/c");
  move("a", "z");
  while (handleQueued())
    EXPECT_TRUE(router.isBusy());
  router.queueDrained({});
  EXPECT_FALSE(router.isBusy());
}

}  // namespace
}  // namespace kestrivane::test

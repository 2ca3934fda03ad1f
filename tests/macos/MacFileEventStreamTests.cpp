// Which functions of FSEvents are called, in which order and with what, and what the adapter does
// when the system calls it back.
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/macos/DispatchGroup.hpp"
#include "platform/macos/DispatchQueue.hpp"
#include "platform/macos/MacFileEventService.hpp"
#include "tests/macos/fakes/FakeCoreFoundation.hpp"
#include "tests/macos/fakes/FakeFSEvents.hpp"
#include "tests/platform/events/EventRecorder.hpp"

namespace kestrivane::test {
namespace {

using Calls = std::vector<std::string>;

class MacFileEventStreamTests : public testing::Test {
 protected:
  std::unique_ptr<FileEventStream> createStream(const std::string& path) {
    return service_.createStream({.paths = {path},
                                  .sinceWhen = service_.currentEventId(),
                                  .latency = std::chrono::milliseconds(100),
                                  .flags = 0x1B},
                                 queue_, recorder_.callback());
  }

  /// The call that makes a stream on "/w".
  std::string creation() {
    return "FSEventStreamCreate /w since " + std::to_string(system_->files.currentEventId()) +
           " latency 0.1 flags 0x1b";
  }

  UsedFakeSystem system_;
  MacFileEventService service_;
  std::shared_ptr<Executor> queue_ = std::make_shared<DispatchQueue>(
      dispatch_queue_create("test", nullptr), std::make_shared<DispatchGroup>());
  EventRecorder recorder_;
};

TEST_F(MacFileEventStreamTests, theLifeOfAStreamMakesTheseCalls) {
  const auto stream = createStream("/w");
  stream->start();
  stream->stop();
  EXPECT_EQ(system_->calls,
            (Calls{"FSEventsGetCurrentEventId", creation(), "FSEventStreamSetDispatchQueue",
                   "FSEventStreamStart", "FSEventStreamStop", "FSEventStreamInvalidate",
                   "FSEventStreamRelease"}));
}

TEST_F(MacFileEventStreamTests, stoppingAgainDoesNothing) {
  auto stream = createStream("/w");
  stream->start();
  stream->stop();
  const Calls before = system_->calls;
  stream->stop();
  stream.reset();
  EXPECT_EQ(system_->calls, before);
}

TEST_F(MacFileEventStreamTests, aStreamThatWasNeverStartedIsOnlyReleased) {
  auto stream = createStream("/w");
  stream->stop();
  stream.reset();
  EXPECT_EQ(system_->calls,
            (Calls{"FSEventsGetCurrentEventId", creation(), "FSEventStreamRelease"}));
}

TEST_F(MacFileEventStreamTests, aStreamThatDoesNotStartSaysSoAndIsEndedLikeAnyOther) {
  system_->failing = {"FSEventStreamStart"};
  const auto stream = createStream("/w");
  EXPECT_FALSE(stream->start());
  stream->stop();
  EXPECT_EQ(system_->calls.back(), "FSEventStreamRelease");
}

TEST_F(MacFileEventStreamTests, thereIsNoStreamWhenAStepOfItsCreationFails) {
  for (const char* function : {"FSEventStreamCreate", "CFArrayCreate", "CFStringCreateWithBytes"}) {
    system_->failing = {function};
    EXPECT_FALSE(createStream("/w")) << function;
  }
}

TEST_F(MacFileEventStreamTests, thereIsNoStreamForAPathThatIsNotUTF8) {
  EXPECT_FALSE(createStream("/w\xFF"));
}

TEST_F(MacFileEventStreamTests, thereIsNoStreamOnAQueueThatIsNotTheSystems) {
  queue_ = std::make_shared<VirtualLoop>();
  EXPECT_FALSE(createStream("/w"));
}

TEST_F(MacFileEventStreamTests, pathsAndFlagWordsArriveAsTheSystemSendsThem) {
  const auto stream = createStream("/w");
  stream->start();
  const FSEventStreamObject& made = lastEventStream();
  callBack(made.callback, made.context.info, {"/w/Ёж.png", "/w/Ёж.jpg"}, {0x10800, 0x18A00});
  EXPECT_EQ(recorder_.batches(),
            (std::vector<EventRecorder::Batch>{{{"/w/Ёж.png", 0x10800}, {"/w/Ёж.jpg", 0x18A00}}}));
  stream->stop();
}

TEST_F(MacFileEventStreamTests, aCallbackWithoutInfoIsIgnored) {
  const auto stream = createStream("/w");
  callBack(lastEventStream().callback, nullptr, {"/w/a"}, {0x800});
  EXPECT_TRUE(recorder_.batches().empty());
}

TEST_F(MacFileEventStreamTests, aCallbackThatWasOnItsWayWhenTheStreamEndedIsDropped) {
  auto stream = createStream("/w");
  stream->start();
  const FSEventStreamCallback callback = lastEventStream().callback;
  void* const info = lastEventStream().context.info;
  system_->loop.post([&] { callBack(callback, info, {"/w/a"}, {0x800}); });
  stream->stop();
  stream.reset();
  system_->loop.runUntilIdle();
  EXPECT_TRUE(recorder_.batches().empty());
}

TEST_F(MacFileEventStreamTests, aQueueGoesAfterItsStreamAndWhatIsOnIt) {
  auto stream = createStream("/w");
  stream->start();
  queue_.reset();
  EXPECT_EQ(system_->objectsAlive().size(), 3U);  // the stream, the queue, the queue's group
  stream->stop();
  stream.reset();
  EXPECT_TRUE(system_->objectsAlive().empty());
}

using MacFileEventStreamDeathTests = MacFileEventStreamTests;

TEST_F(MacFileEventStreamDeathTests, pathsThatAreNoArrayOfStringsEndTheProgram) {
  const auto stream = createStream("/w");
  const FSEventStreamObject& made = lastEventStream();
  const FSEventStreamEventFlags flags = 0x800;
  auto* const string = system_->create<CFStringObject>("/w/a");
  EXPECT_DEATH(made.callback(nullptr, made.context.info, 1, string, &flags, nullptr), "");
  auto* const array = system_->create<CFArrayObject>(
      std::vector<CFTypeRef>{system_->create<CFURLObject>("/w/a", false)});
  EXPECT_DEATH(made.callback(nullptr, made.context.info, 1, array, &flags, nullptr), "");
  const CFTypeRef url = array->values.front();
  for (const CFTypeRef object :
       {static_cast<CFTypeRef>(string), static_cast<CFTypeRef>(array), url})
    CFRelease(object);
}

}  // namespace
}  // namespace kestrivane::test

#include <gtest/gtest.h>

#include "platform/FileEventStream.hpp"
#include "platform/linux/events/EventGatherer.hpp"

namespace kestrivane {
namespace {

using namespace std::chrono_literals;
using Queue = EventGatherer::KernelQueue;
using Paths = std::vector<std::string>;

constexpr std::uint32_t file = fileEventItemIsFile;
constexpr std::uint32_t renamedFile = fileEventItemRenamed | file;
constexpr std::uint32_t createdFile = fileEventItemCreated | file;

class EventGathererTest : public testing::Test {
 protected:
  EventBatch takeAt(std::chrono::milliseconds time, Queue queue = Queue::drained) {
    return gatherer.take(start + time, queue);
  }

  const EventGatherer::TimePoint start{1h};
  EventGatherer gatherer{100ms, EventGatherer::Deferral::firstAtOnce};
};

TEST_F(EventGathererTest, FirstEventAfterQuietIsDueAtOnce) {
  gatherer.add("/w/a", createdFile, start);
  EXPECT_EQ(start, gatherer.deadline());
  EXPECT_EQ(Paths{"/w/a"}, takeAt(0ms).paths);
}

TEST_F(EventGathererTest, LaterEventsAreGatheredUntilTheLatencyHasPassed) {
  gatherer.add("/w/a", createdFile, start);
  takeAt(0ms);
  gatherer.add("/w/b", createdFile, start + 10ms);
  gatherer.add("/w/c", createdFile, start + 50ms);
  EXPECT_EQ(start + 100ms, gatherer.deadline());
  EXPECT_TRUE(takeAt(99ms).empty());
  EXPECT_EQ((Paths{"/w/b", "/w/c"}), takeAt(100ms).paths);
}

TEST_F(EventGathererTest, EventAfterAQuietPeriodIsDueAtOnceAgain) {
  gatherer.add("/w/a", createdFile, start);
  takeAt(0ms);
  gatherer.add("/w/b", createdFile, start + 100ms);
  EXPECT_EQ(Paths{"/w/b"}, takeAt(100ms).paths);
}

TEST_F(EventGathererTest, WithDeferralTheFirstEventIsGatheredToo) {
  EventGatherer deferring(100ms, EventGatherer::Deferral::always);
  deferring.add("/w/a", createdFile, start);
  EXPECT_TRUE(deferring.take(start + 99ms, Queue::drained).empty());
  EXPECT_EQ(Paths{"/w/a"}, deferring.take(start + 100ms, Queue::drained).paths);
}

TEST_F(EventGathererTest, NothingIsDueWithoutEvents) {
  EXPECT_EQ(std::nullopt, gatherer.deadline());
  EXPECT_TRUE(takeAt(1000ms).empty());
}

TEST_F(EventGathererTest, HalvesOfARenameStandNextToEachOtherOldNameFirst) {
  gatherer.addOldName("/w/a.png", file, 7, start);
  gatherer.addNewName("/w/a.jpg", file, 7, start);
  const EventBatch batch = takeAt(0ms);
  EXPECT_EQ((Paths{"/w/a.png", "/w/a.jpg"}), batch.paths);
  EXPECT_EQ((std::vector<std::uint32_t>{renamedFile, renamedFile}), batch.flags);
}

TEST_F(EventGathererTest, WhateverComesBetweenTheHalvesDoesNotPartThem) {
  gatherer.addOldName("/w/a.png", file, 7, start);
  gatherer.add("/w/x", createdFile, start);
  gatherer.addOldName("/w/b.png", file, 8, start);
  gatherer.addNewName("/w/a.jpg", file, 7, start);
  gatherer.add("/w/y", createdFile, start);
  gatherer.addNewName("/w/b.jpg", file, 8, start);
  EXPECT_EQ((Paths{"/w/x", "/w/a.png", "/w/a.jpg", "/w/y", "/w/b.png", "/w/b.jpg"}),
            takeAt(0ms).paths);
}

TEST_F(EventGathererTest, AnOldNameAtTheEndOfAReadWaitsForTheNextRead) {
  gatherer.add("/w/x", createdFile, start);
  gatherer.addOldName("/w/a.png", file, 7, start);
  EXPECT_EQ(Paths{"/w/x"}, takeAt(0ms).paths);
  gatherer.addNewName("/w/a.jpg", file, 7, start + 1ms);
  EXPECT_EQ((Paths{"/w/a.png", "/w/a.jpg"}), takeAt(100ms).paths);
}

TEST_F(EventGathererTest, AnOldNameWithoutANewOneIsReportedAloneAfterTheLatency) {
  gatherer.addOldName("/w/a.png", file, 7, start);
  EXPECT_EQ(start + 100ms, gatherer.deadline());
  EXPECT_TRUE(takeAt(99ms).empty());
  const EventBatch batch = takeAt(100ms);
  EXPECT_EQ(Paths{"/w/a.png"}, batch.paths);
  EXPECT_EQ(std::vector<std::uint32_t>{renamedFile}, batch.flags);
}

TEST_F(EventGathererTest, AnOldNameIsNotGivenUpWhileTheKernelHasMoreToRead) {
  gatherer.addOldName("/w/a.png", file, 7, start);
  EXPECT_TRUE(takeAt(500ms, Queue::moreToRead).empty());
  gatherer.addNewName("/w/a.jpg", file, 7, start + 500ms);
  EXPECT_EQ((Paths{"/w/a.png", "/w/a.jpg"}), takeAt(500ms).paths);
}

TEST_F(EventGathererTest, AGivenUpOldNameDoesNotWaitForTheLatencyASecondTime) {
  gatherer.addOldName("/w/a.png", file, 7, start);
  gatherer.add("/w/x", createdFile, start + 90ms);
  takeAt(90ms);
  EXPECT_EQ(Paths{"/w/a.png"}, takeAt(100ms).paths);
}

TEST_F(EventGathererTest, ANewNameWithoutAnOldOneIsReportedAloneAtOnce) {
  gatherer.addNewName("/w/a.jpg", file, 7, start);
  const EventBatch batch = takeAt(0ms);
  EXPECT_EQ(Paths{"/w/a.jpg"}, batch.paths);
  EXPECT_EQ(std::vector<std::uint32_t>{renamedFile}, batch.flags);
}

TEST_F(EventGathererTest, HalvesOfDifferentRenamesAreNotPaired) {
  gatherer.addOldName("/w/a.png", file, 7, start);
  gatherer.addNewName("/w/b.jpg", file, 8, start);
  EXPECT_EQ(Paths{"/w/b.jpg"}, takeAt(0ms).paths);
  EXPECT_EQ(Paths{"/w/a.png"}, takeAt(100ms).paths);
}

TEST_F(EventGathererTest, EachHalfKeepsItsKind) {
  gatherer.addOldName("/w/a", fileEventItemIsDir, 7, start);
  gatherer.addNewName("/w/b", fileEventItemIsDir, 7, start);
  constexpr std::uint32_t renamedDirectory = fileEventItemRenamed | fileEventItemIsDir;
  EXPECT_EQ((std::vector<std::uint32_t>{renamedDirectory, renamedDirectory}), takeAt(0ms).flags);
}

TEST_F(EventGathererTest, StagingFilesAreNotReported) {
  gatherer.add("/w/.kestrivane-staging-1", createdFile, start);
  gatherer.addOldName("/w/.kestrivane-staging-1", file, 7, start);
  gatherer.addNewName("/w/.kestrivane-staging-2", file, 7, start);
  gatherer.addNewName("/w/.kestrivane-staging-3", file, 8, start);
  gatherer.addOldName("/w/.kestrivane-staging-3", file, 9, start);
  EXPECT_TRUE(takeAt(1000ms).empty());
  EXPECT_EQ(std::nullopt, gatherer.deadline());
}

TEST_F(EventGathererTest, AStagingFilePutInPlaceIsAModification) {
  gatherer.addOldName("/w/.kestrivane-staging-1", file, 7, start);
  gatherer.addNewName("/w/a.jpg", file, 7, start);
  const EventBatch batch = takeAt(0ms);
  EXPECT_EQ(Paths{"/w/a.jpg"}, batch.paths);
  EXPECT_EQ(std::vector<std::uint32_t>{fileEventItemModified | file}, batch.flags);
}

TEST_F(EventGathererTest, AnExchangeWithAStagingFileNeverLooksLikeARename) {
  gatherer.addOldName("/w/.kestrivane-staging-1", file, 7, start);
  gatherer.addNewName("/w/a.jpg", file, 7, start);
  gatherer.addOldName("/w/a.jpg", file, 8, start);
  gatherer.addNewName("/w/.kestrivane-staging-1", file, 8, start);
  const EventBatch batch = takeAt(1000ms);
  EXPECT_EQ((Paths{"/w/a.jpg", "/w/a.jpg"}), batch.paths);
  constexpr std::uint32_t modifiedFile = fileEventItemModified | file;
  EXPECT_EQ((std::vector<std::uint32_t>{modifiedFile, modifiedFile}), batch.flags);
}

TEST_F(EventGathererTest, ANameThatOnlyContainsTheStagingPrefixIsReported) {
  gatherer.add("/.kestrivane-staging-1/a", createdFile, start);
  gatherer.add("/w/x.kestrivane-staging-1", createdFile, start);
  EXPECT_EQ(2U, takeAt(0ms).paths.size());
}

}  // namespace
}  // namespace kestrivane

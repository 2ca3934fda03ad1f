// Turns the kernel's events into those of streams, and keeps what is watched up with them.
//
// Made and driven by one thread: it hands in events in the order of the kernel's queue and says
// when that has been read to its end. Time is what the caller says it is. Thread-safety: none, but
// for `TreeWalker`, whose threads are started here. Ownership: owns the streams' state, registry
// and walker; the inotify instance, log and observer outlive it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Logger.hpp"
#include "platform/linux/events/DoubtfulWatches.hpp"
#include "platform/linux/events/EventDelivery.hpp"
#include "platform/linux/events/EventGatherer.hpp"
#include "platform/linux/events/Inotify.hpp"
#include "platform/linux/events/TreeWalker.hpp"
#include "platform/linux/events/WatchCoverage.hpp"
#include "platform/linux/events/WatchRegistry.hpp"

namespace kestrivane {

class EventRouter {
 public:
  using TimePoint = EventGatherer::TimePoint;
  using KernelQueue = EventGatherer::KernelQueue;

  /// `onFinished` is called on the walker's threads; it has `walkFinished` called on this one.
  EventRouter(const Inotify& inotify, Logger& logger, const WatchingObserver& onWatching,
              TreeWalker::OnFinished onFinished);

  void addStream(StreamId id, const FileEventStreamConfiguration& configuration,
                 std::shared_ptr<Executor> queue, std::shared_ptr<EventDelivery> delivery);
  void removeStream(StreamId id);

  void handle(const RawEvent& event, TimePoint now);
  /// The walk's results count once the queue has been read to its end.
  void walkFinished(std::shared_ptr<Walk> walk) { finishedWalks_.push_back(std::move(walk)); }
  void queueDrained(TimePoint now);

  /// Looks for the streams' folders again: a disk with them may have come or gone.
  void mountsChanged();

  /// Posts the batches that are due.
  void deliver(TimePoint now, KernelQueue queue);
  /// Ends some of the watches that nobody needs.
  void removeUnneededWatches();

  /// Whether there is something to do even without events.
  bool isBusy() const { return moreToRemove_ || isUnsettled_ || !finishedWalks_.empty(); }
  /// When `deliver` has something to post or `queueDrained` to settle, if nothing else happens.
  std::optional<TimePoint> deadline() const;

 private:
  struct Stream {
    std::vector<std::string> paths;
    std::uint32_t flags;  // of `FileEventStreamCreateFlag`
    EventGatherer gatherer;
    std::shared_ptr<Executor> queue;
    std::shared_ptr<EventDelivery> delivery;
    std::size_t walksUnderWay = 0;
    bool isAnnounced = false;
    bool isLimitLogged = false;
    bool isPartial = false;
    std::vector<bool> isFolderMissing{};
  };

  Stream* find(StreamId id);
  void handleFolderItself(const WatchRegistry::Location& location, TimePoint now);
  void handleItem(const WatchRegistry::Location& location, const RawEvent& event, TimePoint now);
  void recoverFromOverflow(TimePoint now);
  std::optional<WatchedDirectory> watchNewDirectory(const WatchRegistry::Location& location,
                                                    const std::string& name);
  void gather(StreamId id, std::string path, const RawEvent& event, TimePoint now);
  std::shared_ptr<Walk> makeWalk(StreamId id, Stream& stream, Walk::Reports reports);
  void finish(Walk& walk, TimePoint now);
  void logFailures(Stream& stream, const Walk& walk);
  void announce(Stream& stream);

  Logger& logger_;
  const WatchingObserver& onWatching_;
  std::map<StreamId, Stream> streams_;
  NameResolver resolver_;
  WatchRegistry registry_;
  DoubtfulWatches doubts_{registry_, resolver_};
  std::vector<std::shared_ptr<Walk>> finishedWalks_;
  std::uint32_t overflows_ = 0;
  bool moreToRemove_ = false;
  /// Whether something was handled since the queue was last read to its end. What settling itself
  /// causes, the end of a watch that was only a look, does not count: it would never settle.
  bool isUnsettled_ = false;
  TreeWalker walker_;  // ends first: its threads use the registry
};

}  // namespace kestrivane

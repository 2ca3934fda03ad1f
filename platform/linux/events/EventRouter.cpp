#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/EventRouter.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>

namespace kestrivane {

namespace {

// Each ended watch is reported in the kernel's queue, which must not run over.
constexpr std::size_t watchesRemovedAtOnce = 1024;

std::uint32_t kindFlag(bool isDirectory) {
  return isDirectory ? fileEventItemIsDir : fileEventItemIsFile;
}

std::string watchLimit() {
  std::string limit = "?";
  std::ifstream("/proc/sys/fs/inotify/max_user_watches") >> limit;
  return limit;
}

}  // namespace

EventRouter::EventRouter(const Inotify& inotify, Logger& logger, const WatchingObserver& onWatching,
                         TreeWalker::OnFinished onFinished)
    : logger_(logger),
      onWatching_(onWatching),
      registry_(inotify),
      walker_(registry_, std::move(onFinished)) {}

void EventRouter::addStream(StreamId id, const FileEventStreamConfiguration& configuration,
                            std::shared_ptr<Executor> queue,
                            std::shared_ptr<EventDelivery> delivery) {
  const auto deferral = (configuration.flags & fileEventStreamNoDefer) != 0
                            ? EventGatherer::Deferral::firstAtOnce
                            : EventGatherer::Deferral::always;
  const auto [added, isNew] =
      streams_.try_emplace(id, Stream{.paths = configuration.paths,
                                      .flags = configuration.flags,
                                      .gatherer = {configuration.latency, deferral},
                                      .queue = std::move(queue),
                                      .delivery = std::move(delivery)});
  Stream& stream = added->second;
  stream.isFolderMissing.resize(stream.paths.size());
  registry_.addStream(id, stream.paths);
  walker_.startAtRoots(makeWalk(id, stream, Walk::Reports::nothing), stream.paths.size());
}

void EventRouter::removeStream(StreamId id) {
  streams_.erase(id);
  registry_.removeStream(id);
}

EventRouter::Stream* EventRouter::find(StreamId id) {
  const auto found = streams_.find(id);
  return found == streams_.end() ? nullptr : &found->second;
}

void EventRouter::handle(const RawEvent& event, TimePoint now) {
  if ((event.mask & IN_Q_OVERFLOW) != 0) {
    isUnsettled_ = true;
    return recoverFromOverflow(now);
  }
  // The kernel tells both the folder's and its parent's watchers; the parent's report has a name.
  const bool isAboutItself = (event.mask & (IN_MOVE_SELF | IN_IGNORED)) != 0;
  if (event.name.empty() && !isAboutItself) return;
  for (const WatchRegistry::Location& location : registry_.locate(event.watch)) {
    isUnsettled_ = true;
    if (isAboutItself) {
      handleFolderItself(location, now);
    } else if (!location.path.empty()) {
      handleItem(location, event, now);
    } else {
      // What happens here meanwhile is found when the directory has its place again.
      registry_.doubt(event.watch);
    }
  }
  if ((event.mask & IN_MOVE_SELF) != 0) registry_.doubt(event.watch);
  if ((event.mask & IN_IGNORED) != 0) registry_.watchEnded(event.watch);
}

void EventRouter::handleFolderItself(const WatchRegistry::Location& location, TimePoint now) {
  Stream* const stream = find(location.stream);
  if (stream == nullptr || !location.isRoot) return;
  if ((stream->flags & fileEventStreamWatchRoot) != 0)
    stream->gatherer.add(location.path, fileEventRootChanged, now);
}

void EventRouter::handleItem(const WatchRegistry::Location& location, const RawEvent& event,
                             TimePoint now) {
  std::string path = childPath(location.path, event.name);
  if ((event.mask & IN_ISDIR) != 0) {
    if ((event.mask & IN_MOVED_FROM) != 0) {
      const WatchedDirectory child = registry_.child(location.directory, event.name);
      if (child.node != noNode) registry_.doubt(child.watch);
    }
    if ((event.mask & (IN_CREATE | IN_MOVED_TO)) != 0) {
      const auto fresh = watchNewDirectory(location, std::string(event.name));
      Stream* const stream = find(location.stream);
      if (fresh && stream != nullptr) {
        // Reported when everything below it is watched as well.
        const auto walk = makeWalk(location.stream, *stream, Walk::Reports::whatIsFound);
        const RawEvent nameless{event.watch, event.mask, event.cookie, {}};
        walk->whenFinished = [this, id = location.stream, path, nameless, now] {
          gather(id, path, nameless, now);
        };
        return walker_.startAt(walk, *fresh, TreeWalker::Top::isNew);
      }
    }
  }
  gather(location.stream, std::move(path), event, now);
}

/// Watches a directory that has appeared; the result is set if its contents have to be walked.
std::optional<WatchedDirectory> EventRouter::watchNewDirectory(
    const WatchRegistry::Location& location, const std::string& name) {
  int error = 0;
  const FileDescriptor parent = registry_.open(location.directory, resolver_, error);
  if (!parent) {
    // It is found when the parent's own place is known.
    registry_.doubt(location.directory.watch);
    return {};
  }
  const std::array names{name.c_str()};
  const auto attached = registry_.attachChildren(location.directory, resolver_, names);
  resolver_.leave();
  if (attached.empty()) return {};
  Stream* const stream = find(location.stream);
  if (stream != nullptr && (attached[0].error == ENOSPC || attached[0].error == EACCES)) {
    Walk failed{.stream = location.stream};
    failed.limitReached = attached[0].error == ENOSPC;
    if (!failed.limitReached)
      failed.failures.push_back({childPath(location.path, name), 0, attached[0].error});
    logFailures(*stream, failed);
  }
  if (!attached[0].needsListing) return {};
  return attached[0].directory;
}

void EventRouter::gather(StreamId id, std::string path, const RawEvent& event, TimePoint now) {
  Stream* const stream = find(id);
  if (stream == nullptr) return;
  const std::uint32_t kind = kindFlag((event.mask & IN_ISDIR) != 0);
  EventGatherer& gatherer = stream->gatherer;
  if ((event.mask & IN_MOVED_FROM) != 0)
    return gatherer.addOldName(std::move(path), kind, event.cookie, now);
  if ((event.mask & IN_MOVED_TO) != 0)
    return gatherer.addNewName(std::move(path), kind, event.cookie, now);
  std::uint32_t flags = kind;
  if ((event.mask & IN_CREATE) != 0) flags |= fileEventItemCreated;
  if ((event.mask & IN_DELETE) != 0) flags |= fileEventItemRemoved;
  if ((event.mask & IN_ATTRIB) != 0) flags |= fileEventItemInodeMetaMod;
  if ((event.mask & IN_CLOSE_WRITE) != 0) flags |= fileEventItemModified;
  if (flags != kind) gatherer.add(std::move(path), flags, now);
}

void EventRouter::recoverFromOverflow(TimePoint now) {
  registry_.beginEpoch();
  ++overflows_;
  for (auto& [id, stream] : streams_) {
    for (const std::string& path : stream.paths)
      stream.gatherer.add(path, fileEventMustScanSubdirs | fileEventKernelDropped, now);
    const auto walk = makeWalk(id, stream, Walk::Reports::nothing);
    walk->whenFinished = [this, overflow = overflows_, streamId = id] {
      if (overflow == overflows_) registry_.doubtUnseen(streamId);
    };
    walker_.startAtRoots(walk, stream.paths.size());
  }
}

void EventRouter::mountsChanged() {
  for (auto& [id, stream] : streams_)
    walker_.startAtRoots(makeWalk(id, stream, Walk::Reports::nothing), stream.paths.size());
}

std::shared_ptr<Walk> EventRouter::makeWalk(StreamId id, Stream& stream, Walk::Reports reports) {
  ++stream.walksUnderWay;
  return std::make_shared<Walk>(Walk{.stream = id, .reports = reports});
}

void EventRouter::queueDrained(TimePoint now) {
  isUnsettled_ = false;
  // First, as a walk that has ended may leave doubts, and nothing else would wake the reader.
  for (const std::shared_ptr<Walk>& walk : std::exchange(finishedWalks_, {}))
    finish(*walk, now);
  for (const WatchRegistry::Location& location : doubts_.settle(now)) {
    Stream* const stream = find(location.stream);
    if (stream == nullptr) continue;
    walker_.startAt(makeWalk(location.stream, *stream, Walk::Reports::whatIsFound),
                    location.directory, TreeWalker::Top::isKnown);
  }
  for (auto& [id, stream] : streams_) {
    if (!stream.isAnnounced && stream.walksUnderWay == 0 && !doubts_.concern(id)) announce(stream);
  }
}

void EventRouter::finish(Walk& walk, TimePoint now) {
  Stream* const stream = find(walk.stream);
  if (stream == nullptr) return;
  if (walk.whenFinished) walk.whenFinished();
  for (Walk::Item& item : walk.found)
    stream->gatherer.add(std::move(item.path), fileEventItemCreated | kindFlag(item.isDirectory),
                         now);
  logFailures(*stream, walk);
  --stream->walksUnderWay;
}

void EventRouter::logFailures(Stream& stream, const Walk& walk) {
  if (walk.limitReached && !std::exchange(stream.isLimitLogged, true)) {
    logger_.log(LogLevel::error, "Достигнут предел числа наблюдаемых папок (" + watchLimit() +
                                     "), не все папки внутри " + stream.paths.front() +
                                     " наблюдаются. Предел задаёт параметр ядра "
                                     "fs.inotify.max_user_watches");
  }
  for (const Walk::Failure& failure : walk.failures) {
    const bool isStreamsFolder = failure.path.empty();
    if (isStreamsFolder) {
      // It is looked for whenever a disk comes or goes.
      if (stream.isFolderMissing[failure.rootIndex]) continue;
      stream.isFolderMissing[failure.rootIndex] = true;
    }
    const std::string& path = isStreamsFolder ? stream.paths[failure.rootIndex] : failure.path;
    logger_.log(LogLevel::error, "Не удалось начать наблюдение за папкой " + path + ": " +
                                     std::generic_category().message(failure.error));
  }
  stream.isPartial |= walk.limitReached || !walk.failures.empty();
}

void EventRouter::announce(Stream& stream) {
  stream.isAnnounced = true;
  if (!onWatching_) return;
  for (std::size_t i = 0; i < stream.paths.size(); ++i) {
    const WatchCoverage coverage = stream.isFolderMissing[i] ? WatchCoverage::none
                                   : stream.isPartial        ? WatchCoverage::partial
                                                             : WatchCoverage::complete;
    onWatching_(stream.paths[i], coverage);
  }
}

void EventRouter::deliver(TimePoint now, KernelQueue queue) {
  for (auto& [id, stream] : streams_) {
    EventBatch batch = stream.gatherer.take(now, queue);
    if (batch.empty()) continue;
    stream.queue->post(
        [delivery = stream.delivery, batch = std::move(batch)] { delivery->deliver(batch); });
  }
}

void EventRouter::removeUnneededWatches() {
  moreToRemove_ = registry_.removeUnneededWatches(watchesRemovedAtOnce);
}

std::optional<EventRouter::TimePoint> EventRouter::deadline() const {
  std::optional<TimePoint> earliest = doubts_.deadline();
  for (const auto& [id, stream] : streams_) {
    const std::optional<TimePoint> deadline = stream.gatherer.deadline();
    if (deadline && (!earliest || *deadline < *earliest)) earliest = deadline;
  }
  return earliest;
}

}  // namespace kestrivane

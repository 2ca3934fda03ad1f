#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/EventReader.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/SignalMask.hpp"

namespace kestrivane {

std::unique_ptr<EventReader> EventReader::create(Logger& logger, const WatchingObserver& onWatching,
                                                 const MountsObserver& onMountsChange) {
  std::unique_ptr<Inotify> inotify = Inotify::create();
  FileDescriptor wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!wakeUp) throw PlatformError(errno, "eventfd: " + std::generic_category().message(errno));
  FileDescriptor mounts(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
  std::unique_ptr<EventReader> reader(
      new EventReader(std::move(inotify), std::move(wakeUp), std::move(mounts)));
  const SignalMask mask;  // inherited by the reading thread and, from it, by the walking ones
  reader->thread_ = std::thread([&self = *reader, &logger, &onWatching, &onMountsChange] {
    self.run(logger, onWatching, onMountsChange);
  });
  return reader;
}

EventReader::~EventReader() {
  ending_ = true;
  post([](EventRouter&) {});
  thread_.join();
}

void EventReader::addStream(StreamId id, FileEventStreamConfiguration configuration,
                            std::shared_ptr<Executor> queue,
                            std::shared_ptr<EventDelivery> delivery) {
  post([id, configuration = std::move(configuration), queue = std::move(queue),
        delivery = std::move(delivery)](EventRouter& router) {
    router.addStream(id, configuration, queue, delivery);
  });
}

void EventReader::removeStream(StreamId id) {
  post([id](EventRouter& router) { router.removeStream(id); });
}

void EventReader::run(Logger& logger, const WatchingObserver& onWatching,
                      const MountsObserver& onMountsChange) {
  EventRouter router(*inotify_, logger, onWatching, [this](std::shared_ptr<Walk> walk) {
    post([walk = std::move(walk)](EventRouter& self) { self.walkFinished(walk); });
  });
  while (!ending_) {
    if (wait(router)) {
      router.mountsChanged();
      if (onMountsChange) onMountsChange();
    }
    // Commands come first: a walk that has ended by now is settled when all events that were queued
    // during it have been read.
    runCommands(router);
    const auto now = std::chrono::steady_clock::now();
    const KernelQueue queue = read(router, now);
    if (queue == KernelQueue::drained) router.queueDrained(now);
    router.removeUnneededWatches();
    router.deliver(now, queue);
  }
}

void EventReader::post(Command command) {
  {
    const std::lock_guard lock(mutex_);
    commands_.push_back(std::move(command));
  }
  ::eventfd_write(wakeUp_.get(), 1);
}

void EventReader::runCommands(EventRouter& router) {
  eventfd_t count = 0;
  ::eventfd_read(wakeUp_.get(), &count);
  std::vector<Command> commands;
  {
    const std::lock_guard lock(mutex_);
    commands.swap(commands_);
  }
  for (const Command& command : commands)
    command(router);
}

bool EventReader::wait(const EventRouter& router) const {
  std::array<pollfd, 3> sources{{{mounts_.get(), POLLPRI, 0},  // passed over if it is not open
                                 {inotify_->descriptor(), POLLIN, 0},
                                 {wakeUp_.get(), POLLIN, 0}}};
  timespec timeout{};
  const timespec* limit = nullptr;  // as long as it takes
  if (router.isBusy()) {
    limit = &timeout;
  } else if (const auto deadline = router.deadline()) {
    const auto left =
        std::max(std::chrono::nanoseconds::zero(), *deadline - std::chrono::steady_clock::now());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    timeout = {.tv_sec = seconds.count(), .tv_nsec = (left - seconds).count()};
    limit = &timeout;
  }
  return ::ppoll(sources.data(), sources.size(), limit, nullptr) > 0 &&
         (sources[0].revents & POLLPRI) != 0;
}

EventReader::KernelQueue EventReader::read(EventRouter& router, EventRouter::TimePoint now) {
  const std::vector<RawEvent>& events = inotify_->read();
  if (events.empty()) return KernelQueue::drained;
  for (const RawEvent& event : events)
    router.handle(event, now);
  eventCount_ += events.size();
  return KernelQueue::moreToRead;
}

}  // namespace kestrivane

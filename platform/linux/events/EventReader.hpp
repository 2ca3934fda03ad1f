// The thread that reads the kernel's queue of events and runs the router.
//
// Thread-safety: every operation may be called from any thread; none waits for the file system.
// Ownership: owns its thread and the inotify instance, and ends both when it is destroyed; the log
// and the observers outlive it.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/linux/FileDescriptor.hpp"
#include "platform/linux/events/EventRouter.hpp"
#include "platform/linux/events/Inotify.hpp"

namespace kestrivane {

class EventReader {
 public:
  /// Throws `PlatformError` when the system has no inotify instance left.
  static std::unique_ptr<EventReader> create(Logger& logger, const WatchingObserver& onWatching,
                                             const MountsObserver& onMountsChange);
  EventReader(const EventReader&) = delete;
  EventReader& operator=(const EventReader&) = delete;
  ~EventReader();

  void addStream(StreamId id, FileEventStreamConfiguration configuration,
                 std::shared_ptr<Executor> queue, std::shared_ptr<EventDelivery> delivery);
  void removeStream(StreamId id);

  /// How many events the kernel has reported so far.
  FileEventId eventCount() const { return eventCount_; }

 private:
  using Command = std::function<void(EventRouter&)>;
  using KernelQueue = EventGatherer::KernelQueue;

  EventReader(std::unique_ptr<Inotify> inotify, FileDescriptor wakeUp, FileDescriptor mounts)
      : inotify_(std::move(inotify)), wakeUp_(std::move(wakeUp)), mounts_(std::move(mounts)) {}

  void run(Logger& logger, const WatchingObserver& onWatching,
           const MountsObserver& onMountsChange);
  void post(Command command);
  void runCommands(EventRouter& router);
  /// Whether mounts have changed meanwhile.
  bool wait(const EventRouter& router) const;
  KernelQueue read(EventRouter& router, EventRouter::TimePoint now);

  std::unique_ptr<Inotify> inotify_;
  FileDescriptor wakeUp_;  // an eventfd(2), readable when there are commands
  FileDescriptor mounts_;  // proc_pid_mountinfo(5), which polls as urgent when mounts have changed
  std::mutex mutex_;
  std::vector<Command> commands_;
  std::atomic<bool> ending_ = false;
  std::atomic<FileEventId> eventCount_ = 0;
  std::thread thread_;
};

}  // namespace kestrivane

// File events from the Linux kernel, over inotify(7).
//
// One inotify instance, one reading thread and two walking ones serve all streams; they start with
// the first stream. Folders may lie inside each other, be watched twice or have several names. What
// the kernel does not report is not seen: mounting below the folder, renaming above it, and
// changes made on another machine. A folder whose disk comes back is watched again. Thread-safety:
// every operation may be called from any thread. Ownership: the service owns its threads and
// observers and outlives its streams; the log outlives the service.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "platform/FileEventStream.hpp"
#include "platform/Logger.hpp"
#include "platform/linux/events/WatchCoverage.hpp"

namespace kestrivane {

class EventReader;

class InotifyFileEventService final : public FileEventService {
 public:
  explicit InotifyFileEventService(UnifiedLog& log, WatchingObserver onWatching = {},
                                   MountsObserver onMountsChange = {});
  ~InotifyFileEventService() override;

  FileEventId currentEventId() override;

  /// Null, with an error in the log, when the system has no inotify instance left for the user
  /// (fs.inotify.max_user_instances, or no descriptor). Relative paths and streams without
  /// `fileEventStreamFileEvents` are not supported: null as well.
  std::unique_ptr<FileEventStream> createStream(FileEventStreamConfiguration configuration,
                                                std::shared_ptr<Executor> queue,
                                                FileEventStream::Callback callback) override;

 private:
  std::unique_ptr<Logger> logger_;
  WatchingObserver onWatching_;
  MountsObserver onMountsChange_;
  std::mutex mutex_;
  std::unique_ptr<EventReader> reader_;  // made with the first stream
  std::atomic<std::uint32_t> lastStreamId_ = 0;
};

}  // namespace kestrivane

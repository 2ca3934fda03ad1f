// Recursive file events of watched folders, in batches of (path, flag word).
//
// An event is reported for the item's absolute path, as a string of bytes. The two halves of a
// rename stand next to each other in one batch, old name first; a half whose other half lies
// outside of the watched folders stands alone. Thread-safety: `start` and `stop` are called by the
// owner, one at a time; callbacks come one at a time, on the stream's own serial queue. Ownership:
// the stream owns the callback.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "async/Executor.hpp"

namespace kestrivane {

/// The bits of an event's flag word.
enum FileEventFlag : std::uint32_t {
  fileEventMustScanSubdirs = 0x1,  ///< events below the path were lost: look at all of it again
  fileEventKernelDropped = 0x4,    ///< with `fileEventMustScanSubdirs`: the kernel's queue ran over
  fileEventRootChanged = 0x20,     ///< the watched folder itself was moved or removed
  fileEventItemCreated = 0x100,
  fileEventItemRemoved = 0x200,
  fileEventItemInodeMetaMod = 0x400,
  fileEventItemRenamed = 0x800,
  fileEventItemModified = 0x1000,
  fileEventItemIsFile = 0x10000,
  fileEventItemIsDir = 0x20000,
};

/// The bits of `FileEventStreamConfiguration::flags`.
enum FileEventStreamCreateFlag : std::uint32_t {
  fileEventStreamUseCFTypes = 0x01,  ///< paths as strings: always so here
  fileEventStreamNoDefer = 0x02,     ///< the first event after a quiet period is delivered at once
  fileEventStreamWatchRoot = 0x08,   ///< changes to the watched folder's own path are reported too
  fileEventStreamFileEvents = 0x10,  ///< one event for a file, not for its folder
};

/// The identifier of an event; identifiers grow with time.
using FileEventId = std::uint64_t;

struct FileEventStreamConfiguration {
  std::vector<std::string> paths;      ///< absolute paths of the folders to watch
  FileEventId sinceWhen = 0;           ///< from `currentEventId()`: no history is replayed
  std::chrono::nanoseconds latency{};  ///< how long events are gathered
  std::uint32_t flags = 0;             ///< of `FileEventStreamCreateFlag`
};

class FileEventStream {
 public:
  /// One flag word for each path, in the same order.
  using Callback =
      std::function<void(std::span<const std::string> paths, std::span<const std::uint32_t> flags)>;

  FileEventStream() = default;
  FileEventStream(const FileEventStream&) = delete;
  FileEventStream& operator=(const FileEventStream&) = delete;
  /// A stream that was started has been stopped before it is destroyed.
  virtual ~FileEventStream() = default;

  /// Starts delivery; returns at once, whatever the size of the tree. Events from then on are
  /// delivered once the walk of the tree has reached their folder.
  virtual bool start() = 0;

  /// Ends delivery for good. No callback runs any more when it returns, unless the call comes from
  /// the callback itself. Calling it again does nothing.
  virtual void stop() = 0;
};

/// Makes streams; stands for the system's file-event service.
class FileEventService {
 public:
  FileEventService() = default;
  FileEventService(const FileEventService&) = delete;
  FileEventService& operator=(const FileEventService&) = delete;
  virtual ~FileEventService() = default;

  /// The identifier of the most recent event.
  virtual FileEventId currentEventId() = 0;

  /// A stream that calls `callback` on the serial `queue`, not started yet; null when it cannot be
  /// made. The service and the queue outlive the stream.
  virtual std::unique_ptr<FileEventStream> createStream(FileEventStreamConfiguration configuration,
                                                        std::shared_ptr<Executor> queue,
                                                        FileEventStream::Callback callback) = 0;
};

}  // namespace kestrivane

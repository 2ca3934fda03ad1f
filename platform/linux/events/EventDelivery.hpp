// Calls a stream's callback until the stream is stopped.
//
// Thread-safety: every operation may be called from any thread, `stop` from the callback too.
// Ownership: shared by the stream and the jobs on its queue; owns the callback.
#pragma once

#include <mutex>
#include <utility>

#include "platform/FileEventStream.hpp"
#include "platform/linux/events/EventGatherer.hpp"

namespace kestrivane {

class EventDelivery {
 public:
  explicit EventDelivery(FileEventStream::Callback callback) : callback_(std::move(callback)) {}

  /// Calls the callback; to be run on the stream's queue.
  void deliver(const EventBatch& batch) {
    const std::lock_guard lock(running_);
    if (!isStopped_) callback_(batch.paths, batch.flags);
  }

  /// No callback runs any more when it returns, but for the one that it is called from.
  void stop() {
    const std::lock_guard lock(running_);
    isStopped_ = true;
  }

 private:
  FileEventStream::Callback callback_;
  // Held during the callback. Recursive, because the callback may stop its own stream.
  std::recursive_mutex running_;
  bool isStopped_ = false;
};

}  // namespace kestrivane

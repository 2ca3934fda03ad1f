// Counts the jobs that were handed to libdispatch, so that their owner can wait for the last one.
//
// Thread-safety: every operation may be called from any thread. Ownership: owns the system's group;
// the queues of one `MacDispatch` share it.
#pragma once

#include <memory>
#include <mutex>

#include "async/Executor.hpp"

struct dispatch_group_s;
struct dispatch_queue_s;

namespace kestrivane {

class DispatchGroup {
 public:
  DispatchGroup();
  DispatchGroup(const DispatchGroup&) = delete;
  DispatchGroup& operator=(const DispatchGroup&) = delete;
  ~DispatchGroup();

  /// Queues `job`, which is dropped instead of run if `executor` is gone when its turn comes, and
  /// at once after `finish`.
  void post(dispatch_queue_s* queue, std::weak_ptr<const bool> executor, Executor::Job job);

  /// Waits for all jobs, and for those that they post meanwhile. Not to be called from a job.
  void finish();

 private:
  dispatch_group_s* const group_;
  std::mutex mutex_;
  bool finished_ = false;
};

}  // namespace kestrivane

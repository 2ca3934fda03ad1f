// A queue that runs its jobs one at a time on the threads of a pool.
//
// Thread-safety: `post` may be called from any thread. Ownership: shares the pool; while jobs are
// queued the pool keeps the queue alive.
#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "async/Executor.hpp"

namespace kestrivane {

class SerialQueue final : public Executor, public std::enable_shared_from_this<SerialQueue> {
 public:
  /// `label` names the thread while it runs the queue's jobs; its end is what is shown.
  SerialQueue(std::shared_ptr<Executor> pool, std::string_view label);

  void post(Job job) override;

 private:
  void schedule();
  void runNext();

  const std::shared_ptr<Executor> pool_;
  const std::string label_;
  std::mutex mutex_;
  std::deque<Job> jobs_;
  bool scheduled_ = false;  ///< a turn is queued in the pool or runs
};

}  // namespace kestrivane

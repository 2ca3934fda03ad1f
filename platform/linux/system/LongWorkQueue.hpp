// Runs each job at once, on a thread of its own that ends with it.
//
// The threads leave SIGINT, SIGTERM and SIGHUP to the main thread. Thread-safety: `post` may be
// called from any thread; `finish` by the owner, not from a job. Ownership: owns its threads and
// jobs.
#pragma once

#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

#include "async/Executor.hpp"

namespace kestrivane {

class LongWorkQueue final : public Executor {
 public:
  LongWorkQueue() = default;
  ~LongWorkQueue() override;

  /// Throws `std::system_error` when the system has no thread left. Once the queue has finished
  /// the job is dropped.
  void post(Job job) override;

  /// Waits for the jobs that run and for those that they post here.
  void finish();

 private:
  using Threads = std::list<std::thread>;

  void work(Threads::iterator self, Job job);

  std::mutex mutex_;
  std::condition_variable changed_;
  Threads running_;
  Threads ended_;  ///< to be joined
  bool finished_ = false;
};

}  // namespace kestrivane

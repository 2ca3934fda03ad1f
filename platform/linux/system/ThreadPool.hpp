// A fixed number of threads that run jobs in the order in which they were posted.
//
// The threads leave SIGINT, SIGTERM and SIGHUP to the main thread. Thread-safety: `post` may be
// called from any thread; `finish` by the owner, not from a job. Ownership: owns its threads and
// jobs.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "async/Executor.hpp"

namespace kestrivane {

class ThreadPool final : public Executor {
 public:
  /// `name` is shown by debuggers, up to 15 bytes of it. Throws `std::system_error` when the system
  /// has no thread left.
  static std::shared_ptr<ThreadPool> create(const std::string& name, unsigned threadCount);
  ~ThreadPool() override;

  /// Once the pool has finished the job is dropped.
  void post(Job job) override;

  /// Runs the jobs that are queued and those that they post here, then ends the threads.
  void finish();

 private:
  ThreadPool() = default;
  void work();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Job> jobs_;
  bool finishing_ = false;
  bool finished_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace kestrivane

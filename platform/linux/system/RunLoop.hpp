// The main loop of a program without a desktop toolkit: jobs and timers, run by whichever thread
// calls `run`.
//
// Thread-safety: every operation may be called from any thread; one thread at a time may be in
// `run`. Ownership: owns its pending jobs and timers and drops them when it is destroyed.
#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "async/EventLoop.hpp"

namespace kestrivane {

class RunLoop final : public EventLoop {
 public:
  RunLoop() = default;
  ~RunLoop() override;

  void post(Job job) override;
  TimerId postAfter(std::chrono::nanoseconds delay, Job job) override;
  void cancelTimer(TimerId timer) override;

  /// Runs jobs as they come until `stop` is called. What is then left stays queued.
  void run();

  /// Ends `run` after the job that is running, or the next `run` at once.
  void stop();

 private:
  using Clock = std::chrono::steady_clock;
  using Key = std::pair<Clock::time_point, TimerId>;

  TimerId insert(Clock::time_point due, Job job);

  std::mutex mutex_;
  std::condition_variable changed_;
  bool stopped_ = false;
  TimerId lastId_ = 0;
  /// In the order in which they run. A posted job is due at the moment it was posted.
  std::map<Key, Job> jobs_;
  std::unordered_map<TimerId, Clock::time_point> timers_;  ///< the due times of the timers in jobs_
};

}  // namespace kestrivane

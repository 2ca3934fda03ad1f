// An event loop that a test drives by hand, with a clock of its own.
//
// Thread-safety: `post` from any thread, the rest on the test's thread.
// Ownership: owns its jobs and timers.
#pragma once

#include <algorithm>
#include <chrono>
#include <deque>
#include <map>
#include <mutex>
#include <utility>

#include "async/EventLoop.hpp"

namespace kestrivane::test {

class VirtualLoop final : public EventLoop {
 public:
  void post(Job job) override {
    const std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
  }

  TimerId postAfter(std::chrono::nanoseconds delay, Job job) override {
    const std::lock_guard lock(mutex_);
    const TimerId timer = ++lastTimer_;
    timers_.emplace(std::pair(now_ + delay, timer), std::move(job));
    return timer;
  }

  void cancelTimer(TimerId timer) override {
    Job dropped;  // destroyed last: what it captured may use the loop
    const std::lock_guard lock(mutex_);
    const auto entry =
        std::ranges::find(timers_, timer, [](const auto& e) { return e.first.second; });
    if (entry == timers_.end()) return;
    dropped = std::move(entry->second);
    timers_.erase(entry);
  }

  /// Runs jobs until there are none; time stands still.
  void runUntilIdle() {
    while (Job job = takeJob())
      job();
  }

  /// Runs jobs and, in their order, the timers that fall due within `duration`.
  void advance(std::chrono::nanoseconds duration) {
    const std::chrono::nanoseconds end = now_ + duration;
    runUntilIdle();
    while (Job timer = takeTimerDueBy(end)) {
      timer();
      runUntilIdle();
    }
    now_ = end;
  }

  std::size_t timerCount() const { return timers_.size(); }

 private:
  Job takeJob() {
    const std::lock_guard lock(mutex_);
    if (jobs_.empty()) return {};
    Job job = std::move(jobs_.front());
    jobs_.pop_front();
    return job;
  }

  Job takeTimerDueBy(std::chrono::nanoseconds end) {
    const std::lock_guard lock(mutex_);
    if (timers_.empty() || timers_.begin()->first.first > end) return {};
    now_ = timers_.begin()->first.first;
    Job job = std::move(timers_.begin()->second);
    timers_.erase(timers_.begin());
    return job;
  }

  std::mutex mutex_;
  std::deque<Job> jobs_;
  std::map<std::pair<std::chrono::nanoseconds, TimerId>, Job> timers_;
  std::chrono::nanoseconds now_{0};
  TimerId lastTimer_ = 0;
};

}  // namespace kestrivane::test

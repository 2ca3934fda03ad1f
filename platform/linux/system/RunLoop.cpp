#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/RunLoop.hpp"

#include <algorithm>

namespace kestrivane {
namespace {

/// Keeps the addition of a delay to the current time from overflowing.
constexpr std::chrono::nanoseconds longestDelay = std::chrono::hours(24 * 365);

}  // namespace

RunLoop::~RunLoop() {
  // A job's captures may post again while they are destroyed, so each job leaves the map first.
  while (!jobs_.empty())
    jobs_.extract(jobs_.begin());
}

void RunLoop::post(Job job) {
  const std::lock_guard lock(mutex_);
  insert(Clock::now(), std::move(job));
}

EventLoop::TimerId RunLoop::postAfter(std::chrono::nanoseconds delay, Job job) {
  delay = std::clamp(delay, std::chrono::nanoseconds(0), longestDelay);
  const std::lock_guard lock(mutex_);
  const Clock::time_point due = Clock::now() + delay;
  const TimerId timer = insert(due, std::move(job));
  timers_.emplace(timer, due);
  return timer;
}

void RunLoop::cancelTimer(TimerId timer) {
  std::map<Key, Job>::node_type dropped;  // destroyed last: its captures may call the loop
  const std::lock_guard lock(mutex_);
  const auto entry = timers_.find(timer);
  if (entry == timers_.end()) return;
  dropped = jobs_.extract(Key(entry->second, timer));
  timers_.erase(entry);
}

void RunLoop::run() {
  std::unique_lock lock(mutex_);
  while (!stopped_) {
    if (jobs_.empty()) {
      changed_.wait(lock);
    } else if (const auto [due, id] = jobs_.begin()->first; due > Clock::now()) {
      changed_.wait_until(lock, due);
    } else {
      auto next = jobs_.extract(jobs_.begin());
      timers_.erase(id);
      lock.unlock();
      next.mapped()();
      next = {};  // what the job owns is released on the loop, without the lock
      lock.lock();
    }
  }
  stopped_ = false;
}

void RunLoop::stop() {
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  changed_.notify_all();
}

EventLoop::TimerId RunLoop::insert(Clock::time_point due, Job job) {
  const TimerId id = ++lastId_;
  const auto [entry, inserted] = jobs_.emplace(Key(due, id), std::move(job));
  if (entry == jobs_.begin()) changed_.notify_all();
  return id;
}

}  // namespace kestrivane

#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacMainLoop.hpp"

#include <algorithm>
#include <map>
#include <mutex>
#include <unordered_map>
#include <utility>

#include <dispatch/dispatch.h>

namespace kestrivane {
namespace {

using Clock = std::chrono::steady_clock;
using Key = std::pair<Clock::time_point, EventLoop::TimerId>;

constexpr std::chrono::nanoseconds longestDelay = std::chrono::hours(24 * 365 * 100);

}  // namespace

/// The jobs in the order in which they run; a posted one is due at the moment it was posted. The
/// system wakes the loop once for each job, by a clock that may differ from ours: so a wake-up runs
/// its own job with all before it, and asks no clock.
class MacMainLoop::Jobs {
 public:
  Key insert(std::chrono::nanoseconds delay, Job job) {
    const std::lock_guard lock(mutex_);
    const Key key(Clock::now() + std::chrono::duration_cast<Clock::duration>(delay), ++lastId_);
    jobs_.emplace(key, std::move(job));
    dueTimes_.emplace(key.second, key.first);
    return key;
  }

  void cancel(TimerId timer) {
    Job dropped;  // destroyed outside of the lock: what it owns may use the loop
    const std::lock_guard lock(mutex_);
    const auto due = dueTimes_.find(timer);
    if (due != dueTimes_.end()) dropped = take(jobs_.find({due->second, timer}));
  }

  void runUpTo(const Key& last) {
    while (const Job job = takeFirst(last))
      job();
  }

 private:
  using JobsByKey = std::map<Key, Job>;

  Job takeFirst(const Key& last) {
    const std::lock_guard lock(mutex_);
    if (jobs_.empty() || jobs_.begin()->first > last) return nullptr;
    return take(jobs_.begin());
  }

  Job take(JobsByKey::iterator position) {
    dueTimes_.erase(position->first.second);
    return std::move(jobs_.extract(position).mapped());
  }

  std::mutex mutex_;
  TimerId lastId_ = 0;
  JobsByKey jobs_;
  std::unordered_map<TimerId, Clock::time_point> dueTimes_;
};

/// What libdispatch carries for one job. The loop may be gone when it comes.
struct MacMainLoop::WakeUp {
  std::weak_ptr<Jobs> jobs;
  Key last;

  static void run(void* context) {
    const std::unique_ptr<WakeUp> wakeUp(static_cast<WakeUp*>(context));
    if (const auto jobs = wakeUp->jobs.lock()) jobs->runUpTo(wakeUp->last);
  }
};

MacMainLoop::MacMainLoop() : jobs_(std::make_shared<Jobs>()) {}

MacMainLoop::~MacMainLoop() = default;

void MacMainLoop::post(Job job) {
  const Key key = jobs_->insert(std::chrono::nanoseconds::zero(), std::move(job));
  dispatch_async_f(dispatch_get_main_queue(), new WakeUp{jobs_, key}, WakeUp::run);
}

EventLoop::TimerId MacMainLoop::postAfter(std::chrono::nanoseconds delay, Job job) {
  delay = std::clamp(delay, std::chrono::nanoseconds::zero(), longestDelay);
  const Key key = jobs_->insert(delay, std::move(job));
  dispatch_after_f(dispatch_time(DISPATCH_TIME_NOW, delay.count()), dispatch_get_main_queue(),
                   new WakeUp{jobs_, key}, WakeUp::run);
  return key.second;
}

void MacMainLoop::cancelTimer(TimerId timer) {
  jobs_->cancel(timer);
}

}  // namespace kestrivane

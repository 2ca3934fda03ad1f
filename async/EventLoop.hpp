// A serial executor with timers: the home of tasks. The main thread's loop is one; tests drive
// another by hand, with virtual time.
//
// Thread-safety: every operation may be called from any thread; jobs run one at a time, on the
// loop's own thread. Ownership: the loop owns its pending jobs and timers.
#pragma once

#include <chrono>
#include <cstdint>

#include "async/Executor.hpp"

namespace kestrivane {

class EventLoop : public Executor {
 public:
  using TimerId = std::uint64_t;

  /// Runs `job` on the loop once `delay` has passed; timers that fall due together run in the
  /// order in which they were made. The result is never 0.
  virtual TimerId postAfter(std::chrono::nanoseconds delay, Job job) = 0;

  /// Drops a timer that has not run yet; does nothing for any other number.
  virtual void cancelTimer(TimerId timer) = 0;
};

}  // namespace kestrivane

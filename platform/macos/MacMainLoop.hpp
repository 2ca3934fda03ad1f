// The main queue of libdispatch as an event loop: the run loop of the application's main thread
// runs its jobs. A run loop that a job starts, a modal dialogue's for instance, runs no other job
// before that one has ended.
//
// Thread-safety: every operation may be called from any thread. Ownership: owns its pending jobs
// and timers; those that are left when it is destroyed never run. Destroyed on the main thread.
#pragma once

#include <memory>

#include "async/EventLoop.hpp"

namespace kestrivane {

class MacMainLoop final : public EventLoop {
 public:
  MacMainLoop();
  ~MacMainLoop() override;

  void post(Job job) override;
  TimerId postAfter(std::chrono::nanoseconds delay, Job job) override;
  void cancelTimer(TimerId timer) override;

 private:
  class Jobs;
  struct WakeUp;

  const std::shared_ptr<Jobs> jobs_;
};

}  // namespace kestrivane

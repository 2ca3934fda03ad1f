// Where work runs: the smallest interface that coroutines, adapters and tests share.
//
// Thread-safety: `post` may be called from any thread; jobs posted by one thread run in the order
// in which they were posted. Ownership: an executor owns the jobs that it has not run yet and
// destroys them, without running them, when it is destroyed.
#pragma once

#include <functional>

namespace kestrivane {

class Executor {
 public:
  using Job = std::function<void()>;

  Executor() = default;
  Executor(const Executor&) = delete;
  Executor& operator=(const Executor&) = delete;
  virtual ~Executor() = default;

  /// Queues `job`; never runs it inside the call. A job must not throw.
  virtual void post(Job job) = 0;
};

}  // namespace kestrivane

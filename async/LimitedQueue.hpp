// Runs so many jobs at once on another queue, the others when their turn has come.
//
// A thread of that queue goes on with the job that has waited longest when it has finished one.
// Thread-safety: `post` may be called from any thread. Ownership: refers to the other queue, which
// outlives it. Jobs that run and those that wait are finished even when it has been destroyed.
#pragma once

#include <deque>
#include <memory>
#include <mutex>

#include "async/Executor.hpp"

namespace kestrivane {

class LimitedQueue final : public Executor {
 public:
  /// At most `limit` jobs at once, at least 1.
  LimitedQueue(Executor& queue, int limit);

  /// Throws what `post` of the other queue throws.
  void post(Job job) override;

 private:
  struct State {
    std::mutex mutex;
    int freeTurns;
    std::deque<Job> waiting;

    Job next();
  };

  Executor& queue_;
  const std::shared_ptr<State> state_;
};

}  // namespace kestrivane

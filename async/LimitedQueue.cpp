#include "async/LimitedQueue.hpp"

#include <utility>

namespace kestrivane {

LimitedQueue::LimitedQueue(Executor& queue, int limit)
    : queue_(queue), state_(std::make_shared<State>()) {
  state_->freeTurns = limit;
}

void LimitedQueue::post(Job job) {
  const std::lock_guard lock(state_->mutex);
  if (state_->freeTurns == 0) {
    state_->waiting.push_back(std::move(job));
    return;
  }
  queue_.post([state = state_, first = std::move(job)]() mutable {
    // What a job owns is released before the next one runs.
    for (Job current = std::move(first); current; current = state->next())
      std::exchange(current, nullptr)();
  });
  --state_->freeTurns;
}

LimitedQueue::Job LimitedQueue::State::next() {
  const std::lock_guard lock(mutex);
  if (waiting.empty()) {
    ++freeTurns;
    return {};
  }
  Job job = std::move(waiting.front());
  waiting.pop_front();
  return job;
}

}  // namespace kestrivane

// `co_await sleepFor(delay)`: suspends the task without blocking its thread.
//
// Resumes on the task's own event loop when the delay has passed or the task is cancelled,
// whichever comes first; which of the two it was can be read from the task's stop token. A sleep in
// a task that is already cancelled ends at once.
#pragma once

#include <chrono>
#include <coroutine>
#include <functional>
#include <optional>
#include <stop_token>

#include "async/Continuation.hpp"
#include "async/Task.hpp"

namespace kestrivane {

class [[nodiscard]] SleepAwaiter {
 public:
  explicit SleepAwaiter(std::chrono::nanoseconds delay) : delay_(delay) {}
  SleepAwaiter(const SleepAwaiter&) = delete;
  SleepAwaiter& operator=(const SleepAwaiter&) = delete;
  ~SleepAwaiter() {
    if (loop_ != nullptr) loop_->cancelTimer(timer_);
  }

  bool await_ready() const noexcept { return false; }

  template <typename Promise>
  bool await_suspend(std::coroutine_handle<Promise> task) {
    const TaskContext& context = task.promise().context;
    if (context.stopToken.stop_requested()) return false;
    loop_ = context.loop;
    const Continuation continuation = suspended_.suspend(task, *loop_);
    timer_ = loop_->postAfter(delay_, [continuation] { continuation.resume(); });
    onCancel_.emplace(context.stopToken, [continuation] { continuation.resume(); });
    return true;
  }

  void await_resume() noexcept { onCancel_.reset(); }

 private:
  std::chrono::nanoseconds delay_;
  EventLoop* loop_ = nullptr;
  EventLoop::TimerId timer_ = 0;
  SuspendedCoroutine suspended_;
  std::optional<std::stop_callback<std::function<void()>>> onCancel_;
};

inline SleepAwaiter sleepFor(std::chrono::nanoseconds delay) {
  return SleepAwaiter(delay);
}

}  // namespace kestrivane

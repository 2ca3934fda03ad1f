// A first-in, first-out counting semaphore for tasks: a task without a permit is suspended, not its
// thread.
//
// Thread-safety: `signal` may be called from any thread, `wait` from any task; a lock serialises
// them. Ownership: the semaphore outlives its callers; destroyed with waiters, it leaves them
// suspended.
#pragma once

#include <coroutine>
#include <deque>
#include <mutex>

#include "async/Continuation.hpp"
#include "async/Task.hpp"

namespace kestrivane {

class AsyncSemaphore {
 public:
  /// `value` free permits, not negative.
  explicit AsyncSemaphore(long value) : value_(value) {}

  class [[nodiscard]] WaitAwaiter {
   public:
    explicit WaitAwaiter(AsyncSemaphore& semaphore) : semaphore_(semaphore) {}
    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    bool await_suspend(std::coroutine_handle<Promise> task) {
      const std::lock_guard lock(semaphore_.mutex_);
      if (semaphore_.value_ > 0) {
        --semaphore_.value_;
        return false;
      }
      semaphore_.waiters_.push_back(suspended_.suspend(task, *task.promise().context.loop));
      return true;
    }
    void await_resume() noexcept {}

   private:
    AsyncSemaphore& semaphore_;
    SuspendedCoroutine suspended_;
  };

  /// `co_await wait()` takes one permit: at once when one is free, else when its turn has come.
  /// Resumes on the waiting task's event loop. Cannot be cancelled.
  WaitAwaiter wait() { return WaitAwaiter(*this); }

  /// Returns one permit: hands it to the longest-waiting task or, without one, makes it free.
  /// More permits than the type can count end the program.
  void signal();

  /// The number of free permits.
  long value() const;

 private:
  mutable std::mutex mutex_;
  long value_;
  std::deque<Continuation> waiters_;
};

}  // namespace kestrivane

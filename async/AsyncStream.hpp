// An unbounded stream of values from any thread to one consumer.
//
// The consumer takes values with `co_await stream.next()` and resumes on the event loop it waited
// from. A finished stream still hands out what it holds, then ends. Cancelling the consumer's task
// finishes the stream. Thread-safety: the producer end (`AsyncStream::Continuation`) may be used
// from any thread; the stream itself has one consumer. Ownership: both ends share the queue.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

#include "async/Continuation.hpp"
#include "async/Task.hpp"

namespace kestrivane {

template <typename T>
class AsyncStream {
  struct Shared {
    std::mutex mutex;
    std::deque<T> values;
    bool finished = false;
    kestrivane::Continuation consumer;

    void wake(std::unique_lock<std::mutex> lock) {
      const kestrivane::Continuation waiting = std::exchange(consumer, {});
      lock.unlock();
      waiting.resume();
    }
    void finish() {
      std::unique_lock lock(mutex);
      finished = true;
      wake(std::move(lock));
    }
  };

 public:
  /// The producer end. Yielding to a finished stream has no effect; finishing twice neither.
  class Continuation {
   public:
    void yield(T value) const {
      std::unique_lock lock(shared_->mutex);
      if (shared_->finished) return;
      shared_->values.push_back(std::move(value));
      shared_->wake(std::move(lock));
    }
    void finish() const { shared_->finish(); }

   private:
    friend AsyncStream;
    explicit Continuation(std::shared_ptr<Shared> shared) : shared_(std::move(shared)) {}
    std::shared_ptr<Shared> shared_;
  };

  static std::pair<AsyncStream, Continuation> make() {
    auto shared = std::make_shared<Shared>();
    return {AsyncStream(shared), Continuation(shared)};
  }

  AsyncStream(AsyncStream&&) noexcept = default;
  AsyncStream& operator=(AsyncStream&&) noexcept = default;
  AsyncStream(const AsyncStream&) = delete;
  AsyncStream& operator=(const AsyncStream&) = delete;
  ~AsyncStream() = default;

  /// The next value, or nothing when the stream has ended. One call at a time.
  Task<std::optional<T>> next() { return take(shared_); }

 private:
  explicit AsyncStream(std::shared_ptr<Shared> shared) : shared_(std::move(shared)) {}

  class Arrival {
   public:
    explicit Arrival(Shared& shared) : shared_(shared) {}
    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    bool await_suspend(std::coroutine_handle<Promise> task) {
      const std::lock_guard lock(shared_.mutex);
      if (shared_.finished || !shared_.values.empty()) return false;
      shared_.consumer = suspended_.suspend(task, *task.promise().context.loop);
      return true;
    }
    void await_resume() noexcept {}

   private:
    Shared& shared_;
    SuspendedCoroutine suspended_;
  };

  static Task<std::optional<T>> take(std::shared_ptr<Shared> shared) {
    const TaskContext context = co_await currentContext();
    const std::stop_callback onCancel(context.stopToken, [shared] { shared->finish(); });
    co_await Arrival(*shared);
    const std::lock_guard lock(shared->mutex);
    if (shared->values.empty()) co_return std::nullopt;
    std::optional<T> value = std::move(shared->values.front());
    shared->values.pop_front();
    co_return value;
  }

  std::shared_ptr<Shared> shared_;
};

}  // namespace kestrivane

// `Task<T>`: a lazy coroutine that yields one value or throws.
//
// A task starts when it is awaited and runs on the event loop of the coroutine that awaits it,
// whose cancellation it shares. Roots are started by `TaskScope`, children by `TaskGroup`.
// Thread-safety: none; a task belongs to its event loop. Ownership: the `Task` owns the coroutine's
// frame; destroying a suspended task destroys its frame and everything that the frame awaits.
#pragma once

#include <cassert>
#include <coroutine>
#include <exception>
#include <optional>
#include <stop_token>
#include <utility>

#include "async/EventLoop.hpp"
#include "async/Trampoline.hpp"

namespace kestrivane {

/// What a task inherits from the one that awaits it.
struct TaskContext {
  EventLoop* loop = nullptr;
  std::stop_token stopToken;
};

template <typename T>
class Task;

namespace detail {

/// Told at the end of a task that nobody awaits. The task is suspended then and may be destroyed.
class CompletionHandler {
 public:
  CompletionHandler() = default;
  CompletionHandler(const CompletionHandler&) = delete;
  CompletionHandler& operator=(const CompletionHandler&) = delete;
  virtual ~CompletionHandler() = default;

  virtual void taskCompleted(std::coroutine_handle<> task) noexcept = 0;
};

struct TaskPromiseBase {
  TaskContext context;
  std::coroutine_handle<> awaiting;
  CompletionHandler* completionHandler = nullptr;
  std::exception_ptr exception;

  struct FinalAwaiter {
    bool await_ready() noexcept { return false; }
    template <typename Promise>
    void await_suspend(std::coroutine_handle<Promise> finished) noexcept {
      TaskPromiseBase& promise = finished.promise();
      if (promise.awaiting) {
        transferTo(promise.awaiting);
      } else if (promise.completionHandler != nullptr) {
        promise.completionHandler->taskCompleted(finished);
      }
    }
    void await_resume() noexcept {}
  };

  std::suspend_always initial_suspend() noexcept { return {}; }
  FinalAwaiter final_suspend() noexcept { return {}; }
  void unhandled_exception() noexcept { exception = std::current_exception(); }
};

template <typename T>
struct TaskPromise final : TaskPromiseBase {
  std::optional<T> value;

  Task<T> get_return_object();
  template <typename U>
  void return_value(U&& result) {
    value.emplace(std::forward<U>(result));
  }
  T takeResult() {
    if (exception) std::rethrow_exception(exception);
    return std::move(*value);
  }
};

template <>
struct TaskPromise<void> final : TaskPromiseBase {
  Task<void> get_return_object();
  void return_void() noexcept {}
  void takeResult() {
    if (exception) std::rethrow_exception(exception);
  }
};

}  // namespace detail

template <typename T = void>
class [[nodiscard]] Task {
 public:
  using promise_type = detail::TaskPromise<T>;
  using Handle = std::coroutine_handle<promise_type>;

  Task(Task&& other) noexcept : coroutine_(std::exchange(other.coroutine_, nullptr)) {}
  Task& operator=(Task&& other) noexcept {
    if (this != &other) {
      if (coroutine_) coroutine_.destroy();
      coroutine_ = std::exchange(other.coroutine_, nullptr);
    }
    return *this;
  }
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;
  ~Task() {
    if (coroutine_) coroutine_.destroy();
  }

  class [[nodiscard]] Awaiter {
   public:
    explicit Awaiter(Handle task) : task_(task) {}
    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    void await_suspend(std::coroutine_handle<Promise> awaiting) noexcept {
      task_.promise().context = awaiting.promise().context;
      task_.promise().awaiting = awaiting;
      transferTo(task_);
    }
    T await_resume() { return task_.promise().takeResult(); }

   private:
    Handle task_;
  };

  /// Starts the task and resumes with its result on the same event loop. Rethrows what it threw.
  Awaiter operator co_await() && noexcept {
    assert(coroutine_ && !coroutine_.done());
    return Awaiter(coroutine_);
  }

  /// For those who start tasks: `TaskGroup` and `TaskScope`.
  Handle handle() const noexcept { return coroutine_; }

 private:
  friend promise_type;
  explicit Task(Handle coroutine) noexcept : coroutine_(coroutine) {}

  Handle coroutine_;
};

template <typename T>
Task<T> detail::TaskPromise<T>::get_return_object() {
  return Task<T>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}

inline Task<void> detail::TaskPromise<void>::get_return_object() {
  return Task<void>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}

class [[nodiscard]] CurrentContextAwaiter {
 public:
  bool await_ready() const noexcept { return false; }
  template <typename Promise>
  bool await_suspend(std::coroutine_handle<Promise> task) {
    context_ = task.promise().context;
    return false;
  }
  TaskContext await_resume() { return std::move(context_); }

 private:
  TaskContext context_;
};

/// `co_await currentContext()`: the context of the running task. Does not suspend.
inline CurrentContextAwaiter currentContext() {
  return {};
}

}  // namespace kestrivane

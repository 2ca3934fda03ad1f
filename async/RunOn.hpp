// `co_await runOn(queue, work)`: runs blocking work elsewhere and awaits its result.
//
// `work` is called once on `queue`; the task resumes on its own event loop with what `work`
// returned or rethrows what it threw. Cancellation does not interrupt work. If the task is
// destroyed meanwhile the work still runs to its end and its result is dropped, so `work` must own
// what it uses. The queue must be drained or destroyed before the task's event loop is.
#pragma once

#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "async/Continuation.hpp"
#include "async/Executor.hpp"
#include "async/Task.hpp"

namespace kestrivane {

template <typename Work>
class [[nodiscard]] RunOnAwaiter {
  using Result = std::invoke_result_t<Work&>;
  using Value = std::conditional_t<std::is_void_v<Result>, std::monostate, Result>;

 public:
  RunOnAwaiter(Executor& queue, Work work)
      : queue_(queue), job_(std::make_shared<Job>(std::move(work))) {}
  RunOnAwaiter(const RunOnAwaiter&) = delete;
  RunOnAwaiter& operator=(const RunOnAwaiter&) = delete;
  ~RunOnAwaiter() = default;

  bool await_ready() const noexcept { return false; }

  template <typename Promise>
  void await_suspend(std::coroutine_handle<Promise> task) {
    const Continuation continuation = suspended_.suspend(task, *task.promise().context.loop);
    queue_.post([job = job_, continuation] {
      job->run();
      continuation.resume();
    });
  }

  Result await_resume() {
    if (job_->exception) std::rethrow_exception(job_->exception);
    if constexpr (!std::is_void_v<Result>) return std::move(*job_->value);
  }

 private:
  struct Job {
    explicit Job(Work w) : work(std::move(w)) {}

    void run() noexcept {
      try {
        if constexpr (std::is_void_v<Result>) {
          (*work)();
        } else {
          value.emplace((*work)());
        }
      } catch (...) {
        exception = std::current_exception();
      }
      work.reset();  // what the work owns is released where it ran
    }

    std::optional<Work> work;
    std::optional<Value> value;
    std::exception_ptr exception;
  };

  Executor& queue_;
  std::shared_ptr<Job> job_;
  SuspendedCoroutine suspended_;
};

/// Copies `work`, which is a named object: GCC 12 destroys a closure that is a temporary of a
/// `co_await` expression twice when the expression throws, so a temporary does not compile.
template <typename Work>
RunOnAwaiter<std::remove_const_t<Work>> runOn(Executor& queue, Work& work) {
  return RunOnAwaiter<std::remove_const_t<Work>>(queue, work);
}

}  // namespace kestrivane

// Runs one task on a hand-driven loop and hands out its result.
#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

#include "async/TaskScope.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {

/// The state of a task that runs in a scope: unfinished, or finished with a value or an exception.
template <typename T>
struct Outcome {
  std::optional<T> value;
  std::exception_ptr exception;
  bool finished = false;
};

namespace detail {
template <typename T>
Task<void> record(Task<T> task, std::shared_ptr<Outcome<T>> outcome) {
  try {
    outcome->value.emplace(co_await std::move(task));
  } catch (...) {
    outcome->exception = std::current_exception();
  }
  outcome->finished = true;
}

inline Task<bool> succeed(Task<void> task) {
  co_await std::move(task);
  co_return true;
}
}  // namespace detail

/// Runs `task` until the loop is idle. Throws what the task threw; `std::logic_error` if it waits.
template <typename T>
T runTask(VirtualLoop& loop, Task<T> task) {
  TaskScope scope(loop);
  const auto outcome = std::make_shared<Outcome<T>>();
  scope.spawn(detail::record(std::move(task), outcome));
  loop.runUntilIdle();
  if (!outcome->finished) throw std::logic_error("the task is still waiting");
  if (outcome->exception) std::rethrow_exception(outcome->exception);
  return std::move(*outcome->value);
}

inline void runTask(VirtualLoop& loop, Task<void> task) {
  runTask(loop, detail::succeed(std::move(task)));
}

}  // namespace kestrivane::test

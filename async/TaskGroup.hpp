// Child tasks that run concurrently on one event loop and are awaited together.
//
// A child starts on the next turn of the loop, shares the cancellation of the task that made the
// group, and is destroyed when it ends. `join` must be awaited before the group is destroyed; the
// one exception is a cancelled task whose frame is destroyed, which takes the children with it.
// Thread-safety: none; a group belongs to its event loop. Ownership: the group owns its children.
#pragma once

#include <cassert>
#include <coroutine>
#include <exception>
#include <list>

#include "async/Continuation.hpp"
#include "async/Task.hpp"

namespace kestrivane {

class TaskGroup final : private detail::CompletionHandler {
 public:
  /// `context` is that of the task that makes the group, from `co_await currentContext()`.
  explicit TaskGroup(TaskContext context) : context_(std::move(context)) {}
  TaskGroup(const TaskGroup&) = delete;
  TaskGroup& operator=(const TaskGroup&) = delete;
  ~TaskGroup() override {
    assert((children_.empty() || context_.stopToken.stop_requested()) && "join the group first");
  }

  void add(Task<void> task) {
    Child& child = children_.emplace_back(std::move(task));
    const auto coroutine = child.task.handle();
    coroutine.promise().context = context_;
    coroutine.promise().completionHandler = this;
    child.start.suspend(coroutine, *context_.loop).resume();
  }

  /// Resumes on the group's event loop when no child is left, at once when there is none. Rethrows
  /// the first exception that a child threw.
  auto join() {
    struct Awaiter {
      TaskGroup& group;
      bool await_ready() const noexcept { return group.children_.empty(); }
      void await_suspend(std::coroutine_handle<> task) noexcept { group.joining_ = task; }
      void await_resume() {
        if (group.exception_) std::rethrow_exception(std::exchange(group.exception_, nullptr));
      }
    };
    return Awaiter{*this};
  }

 private:
  struct Child {
    explicit Child(Task<void> t) : task(std::move(t)) {}
    Task<void> task;
    SuspendedCoroutine start;
  };

  void taskCompleted(std::coroutine_handle<> finished) noexcept override {
    for (auto child = children_.begin(); child != children_.end(); ++child) {
      if (child->task.handle().address() != finished.address()) continue;
      if (!exception_) exception_ = child->task.handle().promise().exception;
      children_.erase(child);
      break;
    }
    if (children_.empty() && joining_) transferTo(std::exchange(joining_, nullptr));
  }

  TaskContext context_;
  std::list<Child> children_;
  std::coroutine_handle<> joining_;
  std::exception_ptr exception_;
};

}  // namespace kestrivane

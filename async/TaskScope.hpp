// Tasks that nobody awaits, and the way to cancel them.
//
// A task spawned here runs until it ends. Destroying the scope cancels the tasks that are left and
// destroys their frames where they are suspended. Thread-safety: a scope belongs to its event loop;
// `TaskHandle::cancel` may be called from any thread. Ownership: the scope owns its tasks; the loop
// outlives the scope.
#pragma once

#include <exception>
#include <functional>
#include <list>
#include <stop_token>

#include "async/Continuation.hpp"
#include "async/Task.hpp"

namespace kestrivane {

/// Names one spawned task. Copies name the same task; a handle does not keep it alive.
class TaskHandle {
 public:
  TaskHandle() = default;
  explicit TaskHandle(std::stop_source stopSource) : stopSource_(std::move(stopSource)) {}

  /// Asks the task to end early: its sleeps and streams end at once.
  void cancel() { stopSource_.request_stop(); }

 private:
  std::stop_source stopSource_;
};

class TaskScope final : private detail::CompletionHandler {
 public:
  explicit TaskScope(EventLoop& loop) : loop_(loop) {}
  TaskScope(const TaskScope&) = delete;
  TaskScope& operator=(const TaskScope&) = delete;
  ~TaskScope() override {
    for (Root& root : roots_)
      root.stopSource.request_stop();
    while (!roots_.empty())
      roots_.pop_front();
  }

  /// Starts `task` on the next turn of the loop. A task that ends with an exception ends the
  /// program.
  TaskHandle spawn(Task<void> task) {
    Root& root = roots_.emplace_back(std::move(task));
    const auto coroutine = root.task.handle();
    coroutine.promise().context = {&loop_, root.stopSource.get_token()};
    coroutine.promise().completionHandler = this;
    root.start.suspend(coroutine, loop_).resume();
    return TaskHandle(root.stopSource);
  }

  bool empty() const { return roots_.empty(); }

  /// Called on the loop each time that the last task has ended. May be absent.
  std::function<void()> onEmpty;

 private:
  struct Root {
    explicit Root(Task<void> t) : task(std::move(t)) {}
    std::stop_source stopSource;
    Task<void> task;
    SuspendedCoroutine start;
  };

  void taskCompleted(std::coroutine_handle<> finished) noexcept override {
    for (auto root = roots_.begin(); root != roots_.end(); ++root) {
      if (root->task.handle().address() != finished.address()) continue;
      if (root->task.handle().promise().exception) std::terminate();
      roots_.erase(root);
      if (roots_.empty() && onEmpty) onEmpty();
      return;
    }
  }

  EventLoop& loop_;
  std::list<Root> roots_;
};

}  // namespace kestrivane

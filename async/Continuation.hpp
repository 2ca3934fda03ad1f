// The handle by which the outside world wakes one suspended coroutine.
//
// Thread-safety: `resume` may be called from any thread and any number of times; only the first
// call has an effect. `suspend` and destruction happen on the coroutine's event loop.
// Ownership: the awaiter owns the `SuspendedCoroutine`; copies of its `Continuation` may outlive
// the coroutine, and resuming one whose coroutine is gone does nothing. The event loop outlives
// both.
#pragma once

#include <coroutine>
#include <memory>
#include <utility>

#include "async/EventLoop.hpp"
#include "async/Trampoline.hpp"

namespace kestrivane {

class Continuation {
 public:
  Continuation() = default;

  /// Resumes the coroutine, once, on the event loop it waited from, never inside this call.
  void resume() const {
    if (!state_) return;
    state_->loop->post([state = state_] {
      if (state->coroutine) resumeFlat(std::exchange(state->coroutine, nullptr));
    });
  }

  explicit operator bool() const { return state_ != nullptr; }

 private:
  friend class SuspendedCoroutine;

  struct State {
    EventLoop* loop;
    std::coroutine_handle<> coroutine;  ///< touched on the loop only; null once resumed or gone
  };

  explicit Continuation(std::shared_ptr<State> state) : state_(std::move(state)) {}

  std::shared_ptr<State> state_;
};

/// A field of an awaiter: its destruction, with the frame of the coroutine, disarms the
/// continuation.
class SuspendedCoroutine {
 public:
  SuspendedCoroutine() = default;
  SuspendedCoroutine(const SuspendedCoroutine&) = delete;
  SuspendedCoroutine& operator=(const SuspendedCoroutine&) = delete;
  ~SuspendedCoroutine() {
    if (continuation_) continuation_.state_->coroutine = nullptr;
  }

  /// Call before the continuation is handed out.
  Continuation suspend(std::coroutine_handle<> coroutine, EventLoop& loop) {
    continuation_ =
        Continuation(std::make_shared<Continuation::State>(Continuation::State{&loop, coroutine}));
    return continuation_;
  }

 private:
  Continuation continuation_;
};

}  // namespace kestrivane

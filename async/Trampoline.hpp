// Resumes coroutines with a flat stack.
//
// A coroutine that hands control to another one names it with `transferTo` and returns; the loop
// in `resumeFlat` at the bottom of the stack then resumes it. The language's own symmetric
// transfer is a tail call only in optimised builds of some compilers; this loop keeps the stack
// flat in every build.
//
// Thread-safety: the pending transfer is a variable of the thread; threads do not meet here.
#pragma once

#include <cassert>
#include <coroutine>
#include <utility>

namespace kestrivane {

namespace detail {
/// The slot of the innermost `resumeFlat` on this thread's stack, or null outside of one.
inline thread_local std::coroutine_handle<>* pendingTransfer = nullptr;
}  // namespace detail

/// Resumes `coroutine`, then whatever it transfers to, until one suspends without a transfer.
inline void resumeFlat(std::coroutine_handle<> coroutine) {
  std::coroutine_handle<> next = coroutine;
  std::coroutine_handle<>* const outer = std::exchange(detail::pendingTransfer, &next);
  while (next)
    std::exchange(next, nullptr).resume();
  detail::pendingTransfer = outer;
}

/// Names the coroutine that this thread resumes next. To be called from `await_suspend` as its last
/// act, at most once, inside of `resumeFlat`.
inline void transferTo(std::coroutine_handle<> coroutine) noexcept {
  assert(detail::pendingTransfer != nullptr && !*detail::pendingTransfer);
  *detail::pendingTransfer = coroutine;
}

}  // namespace kestrivane

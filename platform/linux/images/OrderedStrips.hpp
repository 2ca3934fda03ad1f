// Work on the strips of a picture on all cores, whose results are wanted in order.
//
// Every thread takes the next strip, works on it in buffers of its own and hands the result on when
// those before it are handed on, so no finished strips pile up. Thread-safety: `take` and
// `inOrder` are for the threads of `run`. Ownership: the threads end with `run`.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>

namespace kestrivane {

class OrderedStrips {
 public:
  /// For `count` strips, on at most `threads` threads however many the cores.
  OrderedStrips(std::size_t count, std::size_t threads);

  /// Calls `work` on each thread, the caller's among them, which takes strips until there are no
  /// more. Throws what goes wrong on any of them, when all have ended.
  void run(const std::function<void()>& work);

  /// The number of a strip that nobody has; nothing when all are taken or anything failed.
  std::optional<std::size_t> take();

  /// Calls `handOn` when it has been called for all strips before `strip`, never two at once;
  /// returns without it when anything failed.
  void inOrder(std::size_t strip, const std::function<void()>& handOn);

 private:
  void runOnce(const std::function<void()>& work) noexcept;

  const std::size_t count_;
  const std::size_t threads_;

  std::mutex mutex_;  // for everything below
  std::condition_variable changed_;
  std::size_t taken_ = 0;
  std::size_t handedOn_ = 0;
  std::exception_ptr failure_;
};

}  // namespace kestrivane

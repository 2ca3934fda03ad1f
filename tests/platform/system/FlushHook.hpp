// Lets a test act at the moments when the program flushes a file or folder: the test program has an
// fsync(2) of its own, which asks the hook first.
//
// Thread-safety: none; one hook at a time, and only its thread flushes. Ownership: the hook removes
// itself when it is destroyed.
#pragma once

#include <functional>

namespace kestrivane::test {

class FlushHook {
 public:
  /// Is given the number of the flush, from 1 on, and returns an `errno` to fail with, or 0 to
  /// flush.
  using Action = std::function<int(int flush)>;

  explicit FlushHook(Action action);
  FlushHook(const FlushHook&) = delete;
  FlushHook& operator=(const FlushHook&) = delete;
  ~FlushHook();
};

}  // namespace kestrivane::test

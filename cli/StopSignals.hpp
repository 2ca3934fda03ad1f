// SIGINT, SIGTERM and SIGHUP as calls: the first one is handed to a handler, the second ends the
// process at once.
//
// Thread-safety: made on the main thread before any other thread, which inherits that the signals
// are blocked. Ownership: owns the thread that waits for them.
#pragma once

#include <functional>
#include <thread>

namespace kestrivane {

class StopSignals {
 public:
  /// Blocks the signals in this thread and those that it starts from now on. SIGPIPE and SIGXFSZ
  /// are ignored: a write that cannot be done is an error of that write.
  static void block();

  /// `handler` is called on a thread of this object, once. `block` was called before.
  explicit StopSignals(std::function<void()> handler);
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  ~StopSignals();

 private:
  std::jthread thread_;
};

}  // namespace kestrivane

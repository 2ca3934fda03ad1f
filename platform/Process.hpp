// Other programs, run to their end.
//
// Thread-safety: may be called from any thread, by several at once. Ownership: nothing of a program
// is left when `run` returns.
#pragma once

#include <string>
#include <vector>

#include "platform/FileURL.hpp"

namespace kestrivane {

class Process {
 public:
  Process() = default;
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  virtual ~Process() = default;

  /// Starts the program at `executableURL` and blocks the thread until it has exited. `arguments`
  /// are those after its name. Its standard error is a pipe that nobody reads: what does not fit
  /// falls away, and the program is never held up. Standard input and output are inherited.
  ///
  /// Returns the exit status, which is not 0 either for a program that was killed. Throws
  /// `PlatformError` if the program cannot be started.
  virtual int run(const FileURL& executableURL, const std::vector<std::string>& arguments) = 0;
};

}  // namespace kestrivane

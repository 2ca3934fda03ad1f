// Child processes by Foundation. Thread-safety: may be called from any thread but the main one, by
// several at once: while a process runs, the thread's run loop runs too.
#pragma once

#include "platform/Process.hpp"

namespace kestrivane {

class MacProcess final : public Process {
 public:
  /// A program that was killed by signal N has the exit status 128 + N.
  int run(const FileURL& executableURL, const std::vector<std::string>& arguments) override;
};

}  // namespace kestrivane

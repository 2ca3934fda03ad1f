// Child processes of Linux.
//
// A child gets standard input and output, a pipe for standard error, and nothing else: no other
// descriptor, no blocked or ignored signal. It is the head of a process group of its own, so that
// Ctrl-C in a terminal reaches this program alone, and it is killed when this program ends in
// whatever way. Thread-safety: may be called from any thread, by several at once. The standard
// streams are open and SIGCHLD is not ignored: see `InheritedState.hpp`.
#pragma once

#include "platform/Process.hpp"

namespace kestrivane {

class LinuxProcess final : public Process {
 public:
  /// A program that was killed by signal N has the exit status 128 + N. The error of a program that
  /// cannot be started carries `errno` and is described as the C library describes it.
  int run(const FileURL& executableURL, const std::vector<std::string>& arguments) override;
};

}  // namespace kestrivane

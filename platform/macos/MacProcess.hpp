// Child processes by Foundation. Thread-safety: `run` may be called from any thread but the main
// one, by several at once: while a process runs, the thread's run loop runs too; `endAll` from any.
// Ownership: outlives the calls of `run`.
#pragma once

#include <memory>

#include "platform/Process.hpp"

namespace kestrivane {

class MacProcess final : public Process {
 public:
  MacProcess();
  ~MacProcess() override;

  /// A program that was killed by signal N has the exit status 128 + N. After `endAll` none is
  /// started.
  int run(const FileURL& executableURL, const std::vector<std::string>& arguments) override;

  /// Asks the programs that run to end, for when this one ends: they would go on by themselves.
  void endAll();

 private:
  class Running;

  const std::unique_ptr<Running> running_;
};

}  // namespace kestrivane

// Programs that are lines of text in an `InMemoryFileSystem`: "exit 3" exits with this status,
// "killed 9" is killed by this signal, and anything else cannot be started.
//
// Thread-safety: none; used on the test's thread. Ownership: the file system outlives it.
#pragma once

#include <cerrno>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/PlatformError.hpp"
#include "platform/Process.hpp"
#include "tests/support/InMemoryFileSystem.hpp"

namespace kestrivane::test {

class FakeProcess final : public Process {
 public:
  struct Run {
    std::string executable;
    std::vector<std::string> arguments;

    friend bool operator==(const Run&, const Run&) = default;
  };

  explicit FakeProcess(InMemoryFileSystem& files) : files_(files) {}

  std::vector<Run> runs;              ///< of the programs that could be started
  std::function<void()> whileItRuns;  ///< called in every run, if any

  int run(const FileURL& executableURL, const std::vector<std::string>& arguments) override {
    const auto program = files_.content(executableURL.path());
    if (!program) throw PlatformError(ENOENT, "No such file or directory");
    std::istringstream words(*program);
    std::string ending;
    int number = 0;
    if (!(words >> ending >> number)) throw PlatformError(ENOEXEC, "Exec format error");
    runs.push_back({executableURL.path(), arguments});
    if (whileItRuns) whileItRuns();
    return ending == "killed" ? 128 + number : number;
  }

 private:
  InMemoryFileSystem& files_;
};

}  // namespace kestrivane::test

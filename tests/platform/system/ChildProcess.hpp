// Runs part of a test in a process of its own, where it may lose its rights, its limits or its
// life.
//
// Thread-safety: none. Ownership: the child ends before `reportOfChild` returns.
#pragma once

#include <array>
#include <csignal>
#include <exception>
#include <functional>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane::test {

/// What `work` returned in a child process, or the code of the `PlatformError` that it threw as
/// "error N". A child that dies reports "died".
inline std::string reportOfChild(const std::function<std::string()>& work) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return "no pipe";
  FileDescriptor readEnd(ends[0]);
  FileDescriptor writeEnd(ends[1]);
  const pid_t child = fork();
  if (child < 0) return "no child";
  if (child == 0) {
    std::string report;
    try {
      report = work();
    } catch (const PlatformError& error) {
      report = "error " + std::to_string(error.code());
    } catch (const std::exception& error) {
      report = error.what();
    }
    const ssize_t written = write(writeEnd.get(), report.data(), report.size());
    _exit(written == static_cast<ssize_t>(report.size()) ? 0 : 1);
  }
  writeEnd.reset();
  std::string report;
  std::array<char, 512> buffer{};
  for (ssize_t count = 0; (count = read(readEnd.get(), buffer.data(), buffer.size())) > 0;)
    report.append(buffer.data(), static_cast<std::size_t>(count));
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? report : "died";
}

}  // namespace kestrivane::test

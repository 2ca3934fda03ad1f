#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/LinuxProcess.hpp"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/FileDescriptor.hpp"
#include "platform/linux/system/SystemCall.hpp"

namespace kestrivane {
namespace {

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

/// Both ends are closed in programs that are started; `flags` are further ones of pipe2(2).
Pipe makePipe(int flags) {
  std::array<int, 2> ends{};
  checked(pipe2(ends.data(), O_CLOEXEC | flags));
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

/// Blocks every signal of this thread: a handler must not run in a child that shares its memory.
class AllSignalsBlocked {
 public:
  AllSignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &former_);
  }
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;
  ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }

 private:
  sigset_t former_;
};

/// What the child needs, made before there is a child, because after vfork(2) it may only make
/// system calls.
struct Launch {
  const char* path;
  char* const* arguments;
  int standardError;
  int errors;  ///< where to write the `errno` of a failure; closed by success
  pid_t parent;
};

void takeDefaultSignals() {
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  for (int signal = 1; signal <= SIGRTMAX; ++signal)
    sigaction(signal, &action, nullptr);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// In the child: becomes the program or ends.
[[noreturn]] void becomeProgram(const Launch& launch) {
  // The signal is sent when the thread that forked ends, and that one waits for the child. A parent
  // that ended before the call sends none.
  const bool diesWithParent = prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == launch.parent;
  if (diesWithParent && setpgid(0, 0) == 0 && dup2(launch.standardError, STDERR_FILENO) >= 0) {
    // Every descriptor of this program is closed anyway; this is for those that were passed to it.
    close_range(STDERR_FILENO + 1, UINT_MAX, CLOSE_RANGE_CLOEXEC);
    takeDefaultSignals();
    execve(launch.path, launch.arguments, environ);
  }
  const int error = errno;
  [[maybe_unused]] const ssize_t written = write(launch.errors, &error, sizeof error);
  _exit(127);
}

int waitForEnd(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) throwSystemError(errno);
  }
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

/// `vfork` spares the copy of the page tables, which takes long while large pictures are open.
pid_t startChild(const Launch& launch) {
  const AllSignalsBlocked blocked;
  const pid_t child = vfork();
  if (child == 0) becomeProgram(launch);
  return checked(child);
}

int runToEnd(const FileURL& executableURL, const std::vector<std::string>& arguments) {
  // Not blocking, so that a program that says more than the pipe holds is not held up.
  const Pipe standardError = makePipe(O_NONBLOCK);
  Pipe errors = makePipe(0);

  std::vector<char*> argumentPointers = {const_cast<char*>(executableURL.path().c_str())};
  for (const std::string& argument : arguments)
    argumentPointers.push_back(const_cast<char*>(argument.c_str()));
  argumentPointers.push_back(nullptr);

  const pid_t child = startChild({.path = executableURL.path().c_str(),
                                  .arguments = argumentPointers.data(),
                                  .standardError = standardError.writeEnd.get(),
                                  .errors = errors.writeEnd.get(),
                                  .parent = getpid()});
  errors.writeEnd.reset();
  int error = 0;
  const bool hasFailed = read(errors.readEnd.get(), &error, sizeof error) == sizeof error;
  const int status = waitForEnd(child);
  if (hasFailed) throwSystemError(error);
  return status;
}

}  // namespace

int LinuxProcess::run(const FileURL& executableURL, const std::vector<std::string>& arguments) {
  try {
    return runToEnd(executableURL, arguments);
  } catch (const std::system_error& error) {
    throw PlatformError(error.code().value(), error.code().message());
  }
}

}  // namespace kestrivane

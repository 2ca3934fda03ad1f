#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/InheritedState.hpp"

#include <csignal>
#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace kestrivane {

void replaceInheritedState() {
  ::close(STDIN_FILENO);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest number that is free is the one that is taken.
    if (::fcntl(stream, F_GETFD) < 0) ::open("/dev/null", O_RDWR);
  }
  std::signal(SIGCHLD, SIG_DFL);
}

}  // namespace kestrivane

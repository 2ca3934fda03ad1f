#include "tests/platform/system/PrivateBus.hpp"

#include <array>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane::test {

PrivateBus::PrivateBus() {
  folder_.write("bus.conf", "<busconfig><type>session</type><listen>" + address_ +
                                "</listen><auth>EXTERNAL</auth>"
                                "<policy context=\"default\"><allow send_destination=\"*\"/>"
                                "<allow receive_sender=\"*\"/>"
                                "<allow own=\"*\"/></policy></busconfig>");
  start();
}

PrivateBus::~PrivateBus() {
  stop();
}

void PrivateBus::start() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  const FileDescriptor readEnd(ends[0]);
  FileDescriptor writeEnd(ends[1]);
  const std::string configuration = "--config-file=" + folder_.path() + "/bus.conf";
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process for dbus-daemon");
  if (child == 0) {
    dup2(writeEnd.get(), STDOUT_FILENO);
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
    execlp("dbus-daemon", "dbus-daemon", configuration.c_str(), "--nofork", "--nopidfile",
           "--print-address", static_cast<char*>(nullptr));
    _exit(127);
  }
  daemon_ = child;
  writeEnd.reset();
  char first = 0;
  // The daemon prints its address once it listens.
  if (read(readEnd.get(), &first, 1) != 1) throw std::runtime_error("dbus-daemon does not start");
}

void PrivateBus::stop() {
  if (!daemon_) return;
  kill(*daemon_, SIGKILL);
  waitpid(*daemon_, nullptr, 0);
  daemon_.reset();
  unlink((folder_.path() + "/bus").c_str());
}

}  // namespace kestrivane::test

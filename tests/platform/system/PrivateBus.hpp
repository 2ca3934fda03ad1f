// A message bus of the test's own, with no services that it could start by itself. While it lives
// the environment names it as the session bus.
//
// Thread-safety: none. Ownership: owns the daemon's process and ends it.
#pragma once

#include <optional>
#include <string>

#include <sys/types.h>

#include "tests/platform/system/EnvironmentGuard.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {

class PrivateBus {
 public:
  /// Throws when no bus can be started.
  PrivateBus();
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;
  ~PrivateBus();

  const std::string& address() const { return address_; }

  /// Ends the daemon and with it all connections.
  void stop();
  /// Starts it again under the same address.
  void start();

 private:
  TemporaryFolder folder_;
  const std::string address_ = "unix:path=" + folder_.path() + "/bus";
  EnvironmentGuard environment_{"DBUS_SESSION_BUS_ADDRESS", address_};
  std::optional<pid_t> daemon_;
};

}  // namespace kestrivane::test

// A connection to the user's session bus whose calls can be abandoned from another thread.
//
// Thread-safety: none; one thread uses it. Ownership: owns the connection; the descriptor for
// abandoning is the caller's. Failures are thrown as `PlatformError` with an `errno` as the code.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include <systemd/sd-bus.h>

namespace kestrivane {

struct BusMessageDeleter {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, BusMessageDeleter>;

/// `result`, unless it is a negative `errno` as sd-bus returns it: then throws `PlatformError`.
int checkedBus(int result);

class SessionBus {
 public:
  /// Starts to connect to the bus that the environment names; throws when it names none. Once
  /// `abandonDescriptor` is readable every call ends at once with the code `ECANCELED`.
  static std::unique_ptr<SessionBus> open(int abandonDescriptor);

  BusMessage newMethodCall(const std::string& destination, const char* path, const char* interface,
                           const char* member);

  /// Sends `call` and waits for its reply; null when none has come within `patience`. An error
  /// reply is thrown.
  BusMessage send(BusMessage call, std::chrono::microseconds patience);

 private:
  struct BusDeleter {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
  };

  SessionBus(sd_bus* bus, int abandonDescriptor)
      : bus_(bus), abandonDescriptor_(abandonDescriptor) {}
  void waitForTraffic(std::chrono::steady_clock::time_point deadline);

  std::unique_ptr<sd_bus, BusDeleter> bus_;
  int abandonDescriptor_;
};

}  // namespace kestrivane

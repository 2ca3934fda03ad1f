// A notification service on a bus: keeps what it is told, and answers as the test wants.
//
// Thread-safety: operations may be called from any thread. Ownership: owns its connection and its
// thread; destroying it is the death of the service.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <systemd/sd-bus.h>

namespace kestrivane::test {

/// One call of `Notify`. Hints are written as "name=value", in their order.
struct ShownNotification {
  std::string application;
  unsigned replaces = 0;
  std::string title;
  std::string body;
  std::vector<std::string> hints;
  int timeout = 0;
};

enum class Answers { always, neverToNotify, never };

class MockNotificationService {
 public:
  /// Stands on the bus when it returns.
  MockNotificationService(const std::string& address, std::vector<std::string> capabilities,
                          Answers answers = Answers::always);
  MockNotificationService(const MockNotificationService&) = delete;
  MockNotificationService& operator=(const MockNotificationService&) = delete;
  ~MockNotificationService();

  /// Waits until it was told of `count` notifications; all that there are when it waits in vain.
  std::vector<ShownNotification> waitForShown(std::size_t count);
  /// Waits until it was called at all.
  bool waitForCall();

 private:
  static int onCall(sd_bus_message* call, void* service, sd_bus_error*);
  int handle(sd_bus_message* call);
  void serve();

  const std::vector<std::string> capabilities_;
  const Answers answers_;
  sd_bus* bus_ = nullptr;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool wasCalled_ = false;
  std::vector<ShownNotification> shown_;
  std::atomic<bool> stopping_ = false;
  std::thread thread_;
};

}  // namespace kestrivane::test

// Notifications by the desktop's notification service on the session bus. Without a bus or a
// service nothing is shown, which the log tells once at level debug.
//
// Thread-safety: operations may be called from any thread and never wait for the service; handlers
// are called on a thread of this object, the one of `requestAuthorization` inside the call.
// Ownership: owns its thread and up to 256 notifications; when a slow service lets more pile up,
// the oldest are dropped without a word.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/Logger.hpp"
#include "platform/NotificationCenter.hpp"
#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane {

class FreedesktopNotificationCenter final : public NotificationCenter {
 public:
  /// Throws `std::system_error` when the system has no thread or descriptor left.
  static std::unique_ptr<FreedesktopNotificationCenter> create(UnifiedLog& log);
  /// Takes up to a second to hand over what is queued; the rest is dropped.
  ~FreedesktopNotificationCenter() override;

  /// The desktop asks nobody: granted.
  void requestAuthorization(std::uint32_t options, AuthorizationHandler handler) override;
  void add(NotificationRequest request, AddHandler handler) override;

 private:
  struct Entry {
    NotificationRequest request;
    AddHandler handler;
  };

  FreedesktopNotificationCenter(std::unique_ptr<Logger> logger, FileDescriptor abandon);
  void work();
  bool takeNext(Entry& entry);
  void finish(const Entry& entry, std::exception_ptr error);

  const std::unique_ptr<Logger> logger_;
  const FileDescriptor abandon_;  ///< readable once calls are to end at once
  bool failureIsLogged_ = false;  ///< the thread's own
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Entry> entries_;
  bool stopping_ = false;
  bool finished_ = false;  ///< the thread has nothing left to do
  std::thread thread_;
};

}  // namespace kestrivane

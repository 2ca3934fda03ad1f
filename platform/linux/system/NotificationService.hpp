// The desktop's notification service as one thread sees it: finds it, finds it again when it was
// replaced, and speaks to it (Desktop Notifications 1.2 of freedesktop.org).
//
// Thread-safety: none; one thread uses it. Ownership: owns its connection to the bus; the
// descriptor for abandoning is the caller's. Failures are thrown as `PlatformError`.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/NotificationCenter.hpp"
#include "platform/linux/system/SessionBus.hpp"

namespace kestrivane {

class NotificationService {
 public:
  /// Once `abandonDescriptor` is readable, `show` ends at once.
  explicit NotificationService(int abandonDescriptor) : abandonDescriptor_(abandonDescriptor) {}

  /// Hands the notification to the service and waits a little for its answer.
  void show(const NotificationRequest& request);

 private:
  void connect();
  void notify(const NotificationRequest& request);

  int abandonDescriptor_;
  std::unique_ptr<SessionBus> bus_;  ///< null until the service was found
  std::string owner_;                ///< the service's unique name on the bus
  bool speaksMarkup_ = false;
};

}  // namespace kestrivane

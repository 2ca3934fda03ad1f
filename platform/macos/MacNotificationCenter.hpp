// Notifications of the system's notification centre. It works in an application bundle only.
//
// Thread-safety: operations return at once; handlers are called on a thread of the system.
#pragma once

#include "platform/NotificationCenter.hpp"

namespace kestrivane {

class MacNotificationCenter final : public NotificationCenter {
 public:
  void requestAuthorization(std::uint32_t options, AuthorizationHandler handler) override;
  void add(NotificationRequest request, AddHandler handler) override;
};

}  // namespace kestrivane

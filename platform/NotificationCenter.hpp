// Notifications shown to the user at once.
//
// Thread-safety: operations are called on the main thread and return without waiting for the
// service; completion handlers may be called on any thread, or never if the service dies.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <string>

namespace kestrivane {

/// The bits of the options that permission is asked for.
enum AuthorizationOption : std::uint32_t {
  authorizationSound = 0x2,
  authorizationAlert = 0x4,
};

enum class NotificationSound { none, standard };

struct NotificationRequest {
  std::string identifier;  ///< a fresh UUID
  std::string title;
  std::string body;  ///< file names as they are: the adapter makes valid UTF-8 and escapes markup
  NotificationSound sound = NotificationSound::standard;
};

class NotificationCenter {
 public:
  using AuthorizationHandler = std::function<void(bool granted, std::exception_ptr error)>;
  using AddHandler = std::function<void(std::exception_ptr error)>;

  NotificationCenter() = default;
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;
  virtual ~NotificationCenter() = default;

  /// Asks the user for permission; `options` are of `AuthorizationOption`.
  virtual void requestAuthorization(std::uint32_t options, AuthorizationHandler handler) = 0;

  /// Shows the notification at once.
  virtual void add(NotificationRequest request, AddHandler handler) = 0;
};

}  // namespace kestrivane

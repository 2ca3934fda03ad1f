// The user's preferences, the standard domain: a value that was set wins over a registered one.
//
// Thread-safety: every operation may be called from any thread.
#pragma once

#include <string>
#include <string_view>

namespace kestrivane {

class UserDefaults {
 public:
  UserDefaults() = default;
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;
  virtual ~UserDefaults() = default;

  /// Gives `key` a value for as long as the program runs and no value is set. Never stored.
  virtual void registerDefault(std::string_view key, bool value) = 0;

  /// The value of `key`; false when there is none.
  virtual bool boolForKey(std::string_view key) const = 0;
};

}  // namespace kestrivane

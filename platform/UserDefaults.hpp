// The user's preferences, the standard domain: a value that was set wins over a registered one.
//
// Thread-safety: every operation may be called from any thread. What cannot be stored is logged and
// holds for as long as the program runs; no operation throws because of it.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/Data.hpp"

namespace kestrivane {

class UserDefaults {
 public:
  UserDefaults() = default;
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;
  virtual ~UserDefaults() = default;

  /// Gives `key` a value for as long as the program runs and no value is set. Never stored.
  virtual void registerDefault(std::string_view key, bool value) = 0;

  /// The value of `key`; false when there is none, or one that is no boolean.
  virtual bool boolForKey(std::string_view key) const = 0;

  virtual void setBool(std::string_view key, bool value) = 0;

  /// The array at `key`; nothing when there is no value, one that is no array, or an array with any
  /// element that is not data.
  virtual std::optional<std::vector<Data>> dataArrayForKey(std::string_view key) const = 0;

  virtual void setDataArray(std::string_view key, const std::vector<Data>& value) = 0;
};

}  // namespace kestrivane

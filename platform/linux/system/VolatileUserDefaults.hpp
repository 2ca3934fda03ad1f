// Preferences that hold registered values only: nothing is set by the user and nothing is stored.
//
// Thread-safety: every operation may be called from any thread. Ownership: owns its values.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "platform/UserDefaults.hpp"

namespace kestrivane {

class VolatileUserDefaults final : public UserDefaults {
 public:
  void registerDefault(std::string_view key, bool value) override;
  bool boolForKey(std::string_view key) const override;

 private:
  mutable std::mutex mutex_;
  std::map<std::string, bool, std::less<>> registered_;
};

}  // namespace kestrivane

// Preferences in memory. Thread-safety: none; used on the test's thread. Ownership: owns its
// values.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "platform/UserDefaults.hpp"

namespace kestrivane::test {

class FakeUserDefaults final : public UserDefaults {
 public:
  std::map<std::string, bool, std::less<>> stored;

  void registerDefault(std::string_view key, bool value) override {
    registered_.insert_or_assign(std::string(key), value);
  }

  bool boolForKey(std::string_view key) const override {
    if (const auto found = stored.find(key); found != stored.end()) return found->second;
    const auto found = registered_.find(key);
    return found != registered_.end() && found->second;
  }

 private:
  std::map<std::string, bool, std::less<>> registered_;
};

}  // namespace kestrivane::test

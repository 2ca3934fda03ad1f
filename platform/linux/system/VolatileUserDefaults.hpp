// Preferences that end with the program: nothing is stored.
//
// Thread-safety: every operation may be called from any thread. Ownership: owns its values.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/UserDefaults.hpp"

namespace kestrivane {

class VolatileUserDefaults final : public UserDefaults {
 public:
  void registerDefault(std::string_view key, bool value) override;
  bool boolForKey(std::string_view key) const override;
  void setBool(std::string_view key, bool value) override;
  std::optional<std::vector<Data>> dataArrayForKey(std::string_view key) const override;
  void setDataArray(std::string_view key, const std::vector<Data>& value) override;

 private:
  using Value = std::variant<bool, std::vector<Data>>;

  mutable std::mutex mutex_;
  std::map<std::string, bool, std::less<>> registered_;
  std::map<std::string, Value, std::less<>> set_;
};

}  // namespace kestrivane

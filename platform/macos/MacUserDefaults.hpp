// The standard user defaults, which the system stores and caches. It logs by itself what it cannot
// store. Thread-safety: every operation may be called from any thread.
#pragma once

#include "platform/UserDefaults.hpp"

namespace kestrivane {

class MacUserDefaults final : public UserDefaults {
 public:
  void registerDefault(std::string_view key, bool value) override;
  /// Numbers and the texts "YES" and "true" count as booleans, as everywhere on the system.
  bool boolForKey(std::string_view key) const override;
  void setBool(std::string_view key, bool value) override;
  std::optional<std::vector<Data>> dataArrayForKey(std::string_view key) const override;
  void setDataArray(std::string_view key, const std::vector<Data>& value) override;
};

}  // namespace kestrivane

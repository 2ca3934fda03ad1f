#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/VolatileUserDefaults.hpp"

namespace kestrivane {

void VolatileUserDefaults::registerDefault(std::string_view key, bool value) {
  const std::lock_guard lock(mutex_);
  registered_.insert_or_assign(std::string(key), value);
}

bool VolatileUserDefaults::boolForKey(std::string_view key) const {
  const std::lock_guard lock(mutex_);
  if (const auto value = set_.find(key); value != set_.end()) {
    const bool* const boolean = std::get_if<bool>(&value->second);
    return boolean != nullptr && *boolean;
  }
  const auto entry = registered_.find(key);
  return entry != registered_.end() && entry->second;
}

void VolatileUserDefaults::setBool(std::string_view key, bool value) {
  const std::lock_guard lock(mutex_);
  set_.insert_or_assign(std::string(key), value);
}

std::optional<std::vector<Data>> VolatileUserDefaults::dataArrayForKey(std::string_view key) const {
  const std::lock_guard lock(mutex_);
  const auto value = set_.find(key);
  if (value == set_.end()) return std::nullopt;
  const auto* const array = std::get_if<std::vector<Data>>(&value->second);
  return array == nullptr ? std::nullopt : std::optional(*array);
}

void VolatileUserDefaults::setDataArray(std::string_view key, const std::vector<Data>& value) {
  const std::lock_guard lock(mutex_);
  set_.insert_or_assign(std::string(key), value);
}

}  // namespace kestrivane

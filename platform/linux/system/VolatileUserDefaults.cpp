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
  const auto entry = registered_.find(key);
  return entry != registered_.end() && entry->second;
}

}  // namespace kestrivane

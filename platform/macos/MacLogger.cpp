#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacLogger.hpp"

#include <string>

#include <os/log.h>

#include "platform/Unicode.hpp"

namespace kestrivane {
namespace {

os_log_type_t typeOf(LogLevel level) {
  switch (level) {
    case LogLevel::debug:
      return OS_LOG_TYPE_DEBUG;
    case LogLevel::info:
      return OS_LOG_TYPE_INFO;
    case LogLevel::error:
      return OS_LOG_TYPE_ERROR;
  }
  return OS_LOG_TYPE_INFO;
}

class MacLogger final : public Logger {
 public:
  explicit MacLogger(os_log_t log) : log_(log) {}

  void log(LogLevel level, std::string_view message) noexcept override try {
    os_log_with_type(log_, typeOf(level), "%{public}s", validUTF8(message).c_str());
  } catch (...) {
    // No memory for the text: by contract the message is dropped.
  }

 private:
  const os_log_t log_;
};

}  // namespace

std::unique_ptr<Logger> MacLog::makeLogger(std::string_view subsystem, std::string_view category) {
  return std::make_unique<MacLogger>(
      os_log_create(std::string(subsystem).c_str(), std::string(category).c_str()));
}

}  // namespace kestrivane

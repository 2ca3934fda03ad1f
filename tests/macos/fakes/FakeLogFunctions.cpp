// The unified log: one line for each message, with its format and its argument.
#include <cstdarg>
#include <deque>
#include <string>

#include <os/log.h>

#include "tests/macos/fakes/FakeSystem.hpp"

using kestrivane::test::fakeSystem;

struct os_log_s {
  std::string name;
};

/// Nobody releases a log: the system keeps them all.
os_log_t os_log_create(const char* subsystem, const char* category) {
  static std::deque<os_log_s> logs;
  return &logs.emplace_back(os_log_s{std::string(subsystem) + " " + category});
}

/// Every format has one argument, a string.
void os_log_with_type(os_log_t log, os_log_type_t type, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const char* const text = va_arg(arguments, const char*);
  va_end(arguments);
  fakeSystem().calls.push_back(log->name + " " + std::to_string(type) + " " + format + " " + text);
}

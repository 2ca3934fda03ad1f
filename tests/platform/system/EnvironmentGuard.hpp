// Sets or removes a variable of the environment for as long as it lives.
//
// Thread-safety: none; use it while no other thread runs. Ownership: puts the former value back.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace kestrivane::test {

class EnvironmentGuard {
 public:
  EnvironmentGuard(const char* variable, const std::optional<std::string>& value)
      : variable_(variable) {
    if (const char* const former = std::getenv(variable)) former_ = former;
    set(value);
  }
  EnvironmentGuard(const EnvironmentGuard&) = delete;
  EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;
  ~EnvironmentGuard() { set(former_); }

 private:
  void set(const std::optional<std::string>& value) {
    if (value) {
      setenv(variable_, value->c_str(), 1);
    } else {
      unsetenv(variable_);
    }
  }

  const char* variable_;
  std::optional<std::string> former_;
};

}  // namespace kestrivane::test

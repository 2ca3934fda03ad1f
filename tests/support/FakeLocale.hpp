// The locale of the unit tests: a variable instead of the environment.
//
// Thread-safety: none; set it on the test's thread. A `LanguageGuard` puts the former language
// back.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace kestrivane::test {

/// What `currentLanguageCode()` returns; "en" at first.
extern std::optional<std::string> fakeLanguageCode;

class LanguageGuard {
 public:
  explicit LanguageGuard(std::optional<std::string> language)
      : former_(std::exchange(fakeLanguageCode, std::move(language))) {}
  LanguageGuard(const LanguageGuard&) = delete;
  LanguageGuard& operator=(const LanguageGuard&) = delete;
  ~LanguageGuard() { fakeLanguageCode = std::move(former_); }

 private:
  std::optional<std::string> former_;
};

}  // namespace kestrivane::test

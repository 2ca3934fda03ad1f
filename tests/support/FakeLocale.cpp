#include "tests/support/FakeLocale.hpp"

#include "platform/Locale.hpp"

namespace kestrivane {

std::optional<std::string> test::fakeLanguageCode = "en";

std::optional<std::string> currentLanguageCode() {
  return test::fakeLanguageCode;
}

}  // namespace kestrivane

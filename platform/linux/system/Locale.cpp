#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/Locale.hpp"

#include <cstdlib>
#include <string_view>

namespace kestrivane {
namespace {

/// The name of the locale for messages. The variables and their order are those of POSIX.1-2017,
/// section 8.2; an empty variable counts as unset.
std::string_view messageLocaleName() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* const value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

bool isASCIILetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

std::optional<std::string> currentLanguageCode() {
  // A name has the form language[_territory][.codeset][@modifier].
  const std::string_view name = messageLocaleName();
  const std::string_view language = name.substr(0, name.find_first_of("_.@"));
  if (language.empty() || language == "C" || language == "POSIX") return std::nullopt;
  for (const char c : language)
    if (!isASCIILetter(c)) return std::nullopt;
  return std::string(language);
}

}  // namespace kestrivane

// The text form of a random UUID, as a predicate.
#pragma once

#include <string_view>

namespace kestrivane::test {

/// True for the 36-character, upper-case form of a version 4 UUID (RFC 9562).
inline bool isUpperCaseUUID(std::string_view text) {
  constexpr std::string_view form = "XXXXXXXX-XXXX-4XXX-VXXX-XXXXXXXXXXXX";
  if (text.size() != form.size()) return false;
  for (std::size_t i = 0; i < form.size(); ++i) {
    const std::string_view allowed = form[i] == 'X'   ? "0123456789ABCDEF"
                                     : form[i] == 'V' ? "89AB"
                                                      : form.substr(i, 1);
    if (allowed.find(text[i]) == std::string_view::npos) return false;
  }
  return true;
}

}  // namespace kestrivane::test

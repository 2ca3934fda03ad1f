// Text as Unicode sees it. Pure functions, the same on every system but for the version of the
// Unicode character database that lower case rests on. Thread-safety: may be called from any
// thread.
#pragma once

#include <string>
#include <string_view>

namespace kestrivane {

/// `text` in lower case, whatever the locale. In text that is not UTF-8 only A to Z change.
std::string lowercased(std::string_view text);

/// `text` with A to Z in lower case and nothing else changed.
inline std::string asciiLowercased(std::string_view text) {
  std::string result(text);
  for (char& c : result)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return result;
}

/// `text` with every byte that is not part of valid UTF-8 replaced by U+FFFD.
std::string validUTF8(std::string_view text);

/// `text` as one line of valid UTF-8 that does nothing to a terminal: control characters are
/// written as escapes (\n, \x1b).
std::string printable(std::string_view text);

}  // namespace kestrivane

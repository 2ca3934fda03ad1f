// The two text operations that need the Unicode character database. Pure functions, the same on
// every system but for the version of the database. Thread-safety: may be called from any thread.
#pragma once

#include <string>
#include <string_view>

namespace kestrivane {

/// `text` in lower case, whatever the locale. In text that is not UTF-8 only A to Z change.
std::string lowercased(std::string_view text);

/// `text` with every byte that is not part of valid UTF-8 replaced by U+FFFD.
std::string validUTF8(std::string_view text);

}  // namespace kestrivane

// The current locale. A free function, because an error describes itself without being handed
// anything. Thread-safety: may be called from any thread.
#pragma once

#include <optional>
#include <string>

namespace kestrivane {

/// The language code of the user's current locale ("en", "ru"), asked for anew on every call;
/// nothing when the locale names no language.
std::optional<std::string> currentLanguageCode();

}  // namespace kestrivane

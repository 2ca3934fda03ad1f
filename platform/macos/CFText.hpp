// Text between UTF-8 and the system's strings.
//
// Thread-safety: pure functions. Ownership: the caller owns what they return.
#pragma once

#include <string>
#include <string_view>

#include "platform/macos/CFReference.hpp"

namespace kestrivane {

/// Null when `text` is not valid UTF-8.
CFReference<CFStringRef> makeCFString(std::string_view text);

/// The same characters, composed as they are in `string`: two paths stay equal or different.
std::string textOf(CFStringRef string);

}  // namespace kestrivane

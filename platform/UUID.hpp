// Random UUIDs. Thread-safety: may be called from any thread.
#pragma once

#include <string>

namespace kestrivane {

/// A fresh version 4 UUID (RFC 9562) in its 36-character form, upper case.
std::string makeUUIDString();

}  // namespace kestrivane

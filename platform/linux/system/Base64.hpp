// Bytes as text, in the base 64 encoding with padding (RFC 4648, section 4). Pure functions.
// Thread-safety: may be called from any thread.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/Data.hpp"

namespace kestrivane {

std::string base64(std::span<const std::byte> bytes);

/// Nothing unless `text` is exactly what `base64` makes of some bytes.
std::optional<Data> bytesOfBase64(std::string_view text);

}  // namespace kestrivane

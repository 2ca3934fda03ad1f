// The ICC profile that stands for colours told by numbers (ITU-T H.273).
//
// Thread-safety: functions without state. Ownership: nothing is kept.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/images/HeicTiles.hpp"

namespace kestrivane::heic {

/// Empty for the colours of sRGB and for numbers that say nothing. Pictures for brighter screens
/// (PQ, HLG) are taken for ordinary ones.
std::vector<std::uint8_t> profileOf(const CodedColors& numbers);

}  // namespace kestrivane::heic

// Where a Matroska or WebM file says that it ends.
//
// Thread-safety: a pure function. Ownership: none.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace kestrivane {

/// The offset, in bytes, of the end of the segment, from the beginning of such a file (RFC 8794,
/// sections 4 to 6, and RFC 9559, section 5.1). Nothing when `beginning` is not that of one, too
/// short to tell, or of a live stream, whose end was not known.
std::optional<std::uint64_t> matroskaExtent(std::span<const std::uint8_t> beginning);

}  // namespace kestrivane

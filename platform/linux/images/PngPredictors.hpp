// What the row filters of PNG predict a byte to be (ISO/IEC 15948, clause 9), for filtering rows
// and for undoing it.
//
// Computed in bytes alone, so that the compiler can turn loops over them into vector instructions;
// they are inlined even into functions that are compiled for other processors than the rest.
// Thread-safety: functions without state.
#pragma once

#include <algorithm>
#include <cstdint>

#define KESTRIVANE_INLINE [[gnu::always_inline]] inline

namespace kestrivane::png {

/// How a row is stored; the value is the byte that precedes the row in the file.
enum class Filter : std::uint8_t { none = 0, sub = 1, up = 2, average = 3, paeth = 4 };

// Each takes the three neighbours: to the left, above, above to the left.

KESTRIVANE_INLINE std::uint8_t predictSub(std::uint8_t left, std::uint8_t, std::uint8_t) {
  return left;
}

KESTRIVANE_INLINE std::uint8_t predictUp(std::uint8_t, std::uint8_t above, std::uint8_t) {
  return above;
}

KESTRIVANE_INLINE std::uint8_t predictAverage(std::uint8_t left, std::uint8_t above, std::uint8_t) {
  return static_cast<std::uint8_t>((left & above) + ((left ^ above) >> 1));
}

KESTRIVANE_INLINE std::uint8_t distance(std::uint8_t a, std::uint8_t b) {
  return static_cast<std::uint8_t>(std::max(a, b) - std::min(a, b));
}

/// The neighbour nearest to left + above - corner: where the two steps from the corner point the
/// same way, the corner is farther off than either neighbour, and how much farther does not matter.
KESTRIVANE_INLINE std::uint8_t predictPaeth(std::uint8_t left, std::uint8_t above,
                                            std::uint8_t corner) {
  const std::uint8_t fromLeft = distance(above, corner);
  const std::uint8_t fromAbove = distance(left, corner);
  const std::uint8_t farther = std::max(fromLeft, fromAbove);
  const std::uint8_t nearer = std::min(fromLeft, fromAbove);
  const bool sameWay = (above > corner) == (left > corner);
  const auto fromCorner = static_cast<std::uint8_t>(farther - (sameWay ? 0 : nearer));
  const std::uint8_t other = fromAbove <= fromCorner ? above : corner;
  return fromLeft <= std::min(fromAbove, fromCorner) ? left : other;
}

}  // namespace kestrivane::png

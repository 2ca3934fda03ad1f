// Undoes the row filters of PNG (ISO/IEC 15948, clause 9): the bytes of a row from its stored
// differences.
//
// Every byte depends on the one before it, so pixels are taken one after the other, but all
// channels of a pixel at once where the processor has the instructions. Both ways give the same
// bytes. Thread-safety: functions without state. Ownership: everything is borrowed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/linux/images/PngPredictors.hpp"

namespace kestrivane::png {

/// A row as it is stored, without the filter's byte.
struct StoredRow {
  std::span<const std::uint8_t> bytes;
  const std::uint8_t* above;      ///< as many bytes: the row before, zeros for the first one
  std::size_t bytesPerPixel = 0;  ///< 1 to 8; 1 for pixels smaller than a byte
};

/// Writes the row's bytes, as many as are stored, to `target`, which is none of the other two.
using Unfilter = void (*)(Filter filter, const StoredRow& row, std::uint8_t* target);

void unfilterPortably(Filter filter, const StoredRow& row, std::uint8_t* target);

/// The fastest that this processor can run.
Unfilter fastestUnfilter();

}  // namespace kestrivane::png

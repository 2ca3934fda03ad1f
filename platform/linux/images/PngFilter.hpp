// The row filters of PNG (ISO/IEC 15948, clause 9), for writing: they turn a row into differences
// from its neighbours, which compress better where a picture changes gradually.
//
// The loops exist twice from one source: as every processor of the family can run them, and with
// wider vectors where the processor has these. Both give the same bytes. Thread-safety: functions
// without state. Ownership: everything is borrowed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/linux/images/PngPredictors.hpp"

namespace kestrivane::png {

/// A row as it stands in the file (channels of 16 bits with the high byte first) and what its bytes
/// are compared with.
struct FilterRow {
  std::span<const std::uint8_t> bytes;
  const std::uint8_t* above;      ///< as many bytes: the row before, zeros for the first one
  std::size_t bytesPerPixel = 0;  ///< 1 to 8, not more than a row has
};

/// One compilation of the loops.
struct FilterLoops {
  /// The filter that leaves the smallest sum of absolute differences.
  Filter (*best)(const FilterRow& row);
  /// Writes the filtered bytes, as many as the row has, to `target`.
  void (*apply)(Filter filter, const FilterRow& row, std::uint8_t* target);
};

extern const FilterLoops portableFilterLoops;

/// The fastest that this processor can run.
const FilterLoops& fastestFilterLoops();

}  // namespace kestrivane::png

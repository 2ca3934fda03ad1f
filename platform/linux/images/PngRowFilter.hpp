// The filtered rows of a picture, as a PNG's stream holds them: each with its filter byte before
// it, channels of 16 bits with the high byte first.
//
// Thread-safety: none; give each thread its own. Ownership: borrows the picture, owns its scratch.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/linux/images/PixelRows.hpp"

namespace kestrivane::png {

/// How filters are chosen. Photos get small by the filter that suits each row; drawings, with their
/// flat areas and repetitions, often get smaller unfiltered.
enum class FilterChoice : bool { none, perRow };

class RowFilter {
 public:
  explicit RowFilter(const PixelRows& picture);

  /// Appends the rows from `begin` up to `end`.
  void append(std::size_t begin, std::size_t end, FilterChoice choice,
              std::vector<std::uint8_t>& target);

 private:
  const std::uint8_t* fileRow(std::size_t y);

  /// Two of each, as a row and the one above it are looked at together.
  using RowPair = std::array<std::vector<std::uint8_t>, 2>;

  const PixelRows& picture_;
  RowPair scratch_;
  RowPair swapped_;
  std::vector<std::uint8_t> zeros_;  // what is above the first row
};

}  // namespace kestrivane::png

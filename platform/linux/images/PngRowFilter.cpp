#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngRowFilter.hpp"

#include <bit>

#include "platform/linux/images/PngFilter.hpp"

namespace kestrivane::png {
namespace {

void swapBytes(const std::uint8_t* source, std::vector<std::uint8_t>& target) {
  for (std::size_t i = 0; i + 1 < target.size(); i += 2) {
    target[i] = source[i + 1];
    target[i + 1] = source[i];
  }
}

}  // namespace

RowFilter::RowFilter(const PixelRows& picture) : picture_(picture), zeros_(picture.rowBytes()) {
  for (std::vector<std::uint8_t>& scratch : scratch_)
    scratch.resize(picture.scratchBytes());
  if (picture.layout().depth == Depth::sixteen)
    for (std::vector<std::uint8_t>& swapped : swapped_)
      swapped.resize(picture.rowBytes());
}

const std::uint8_t* RowFilter::fileRow(std::size_t y) {
  const std::uint8_t* const row = picture_.row(y, scratch_[y % 2].data());
  if (picture_.layout().depth == Depth::eight || std::endian::native == std::endian::big)
    return row;
  swapBytes(row, swapped_[y % 2]);
  return swapped_[y % 2].data();
}

void RowFilter::append(std::size_t begin, std::size_t end, FilterChoice choice,
                       std::vector<std::uint8_t>& target) {
  const FilterLoops& loops = fastestFilterLoops();
  const std::size_t rowBytes = picture_.rowBytes();
  std::size_t place = target.size();
  target.resize(place + (end - begin) * (rowBytes + 1));
  const std::uint8_t* above = begin == 0 ? zeros_.data() : fileRow(begin - 1);
  for (std::size_t y = begin; y < end; ++y, place += rowBytes + 1) {
    const std::uint8_t* const bytes = fileRow(y);
    const FilterRow row{{bytes, rowBytes}, above, picture_.layout().bytesPerPixel()};
    const Filter filter = choice == FilterChoice::perRow ? loops.best(row) : Filter::none;
    target[place] = static_cast<std::uint8_t>(filter);
    loops.apply(filter, row, target.data() + place + 1);
    above = bytes;
  }
}

}  // namespace kestrivane::png

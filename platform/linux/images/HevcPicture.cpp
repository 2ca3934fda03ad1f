#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/HevcPicture.hpp"

#include <algorithm>

#include <sys/mman.h>

namespace kestrivane::heic {
namespace {

/// Side of the smallest block of brightness that is coded by itself.
constexpr std::size_t blockSide = 8;
constexpr std::size_t pageBytes = 4096;
/// libde265 reads beyond the end of a row, also of the last one.
constexpr std::size_t paddingBytes = 64;
constexpr std::size_t strideUnit = 64;

std::size_t roundedUp(std::size_t value, std::size_t unit) {
  return (value + unit - 1) / unit * unit;
}

/// Four samples that no coder leaves side by side, the extremes in turn, stand in the middle of a
/// block, where filters over its edges do not reach.
template <typename Sample>
struct Mark {
  explicit Mark(int bits)
      : upper{1, static_cast<Sample>((1 << bits) - 2)},
        lower{static_cast<Sample>((1 << bits) - 3), 2} {}

  std::array<Sample, 2> upper;
  std::array<Sample, 2> lower;
};

}  // namespace

HevcPicture::HevcPicture(const HevcFormat& format, const HevcWindow& window) : format_(format) {
  for (std::size_t i = 0; i < format.planeCount(); ++i) {
    Plane& plane = planes_[i];
    const std::size_t across = i > 0 && format.isHalvedAcross() ? 2 : 1;
    const std::size_t down = i > 0 && format.isHalvedDown() ? 2 : 1;
    plane.width = window.codedWidth / across;
    plane.rows = window.codedHeight / down;
    plane.stride = roundedUp(plane.width * format.bytesPerSample(), strideUnit);
    plane.first = window.top / down * plane.stride + window.left / across * format.bytesPerSample();
    plane.bytes =
        std::make_unique_for_overwrite<std::uint8_t[]>(plane.stride * plane.rows + paddingBytes);
  }
  markBlocks();
}

const std::uint8_t* HevcPicture::row(std::size_t plane, std::size_t y) const {
  const Plane& from = planes_[plane];
  return from.bytes.get() + from.first + y * from.stride;
}

void HevcPicture::releaseRowsBefore(std::size_t y) {
  for (std::size_t i = 0; i < format_.planeCount(); ++i) {
    Plane& plane = planes_[i];
    const std::size_t rows = i > 0 && format_.isHalvedDown() ? y / 2 : y;
    const auto start = reinterpret_cast<std::uintptr_t>(plane.bytes.get());
    const std::size_t begin = roundedUp(start + plane.released, pageBytes);
    const std::size_t end = (start + rows * plane.stride) / pageBytes * pageBytes;
    if (end <= begin) continue;
    ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
    plane.released = end - start;
  }
}

/// Calls `function` with the two rows in the middle of each block, at its middle two samples, until
/// it returns true. Returns whether it did.
template <typename Sample, typename Function>
bool HevcPicture::anyMiddle(Function function) {
  for (std::size_t i = 0; i < format_.planeCount(); ++i) {
    Plane& plane = planes_[i];
    const bool isDifference = i > 0;
    const std::size_t width = isDifference && format_.isHalvedAcross() ? blockSide / 2 : blockSide;
    const std::size_t height = isDifference && format_.isHalvedDown() ? blockSide / 2 : blockSide;
    for (std::size_t y = 0; y + height <= plane.rows; y += height) {
      auto* const upper =
          reinterpret_cast<Sample*>(plane.bytes.get() + (y + height / 2 - 1) * plane.stride);
      auto* const lower = upper + plane.stride / sizeof(Sample);
      for (std::size_t x = width / 2 - 1; x < plane.width; x += width)
        if (function(upper + x, lower + x)) return true;
    }
  }
  return false;
}

template <typename Sample>
void HevcPicture::mark() {
  const Mark<Sample> mark(format_.bits);
  anyMiddle<Sample>([&](Sample* upper, Sample* lower) {
    std::ranges::copy(mark.upper, upper);
    std::ranges::copy(mark.lower, lower);
    return false;
  });
}

template <typename Sample>
bool HevcPicture::isMarked() {
  const Mark<Sample> mark(format_.bits);
  return anyMiddle<Sample>([&](const Sample* upper, const Sample* lower) {
    return std::equal(mark.upper.begin(), mark.upper.end(), upper) &&
           std::equal(mark.lower.begin(), mark.lower.end(), lower);
  });
}

void HevcPicture::markBlocks() {
  return format_.bits > 8 ? mark<std::uint16_t>() : mark<std::uint8_t>();
}

bool HevcPicture::missesBlocks() {
  return format_.bits > 8 ? isMarked<std::uint16_t>() : isMarked<std::uint8_t>();
}

}  // namespace kestrivane::heic

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngFilter.hpp"

#include <algorithm>
#include <array>

// The loops are written so that the compiler turns them into vector instructions; the build asks
// for the optimisation level that this takes.

namespace kestrivane::png {
namespace {

using Byte = std::uint8_t;

template <auto predict>
KESTRIVANE_INLINE void applyPrediction(const FilterRow& row, Byte* __restrict target) {
  const Byte* const bytes = row.bytes.data();
  const Byte* const above = row.above;
  const std::size_t pixel = row.bytesPerPixel;
  const std::size_t count = row.bytes.size();
  for (std::size_t i = 0; i < pixel; ++i)
    target[i] = static_cast<Byte>(bytes[i] - predict(0, above[i], 0));
  for (std::size_t i = pixel; i < count; ++i)
    target[i] = static_cast<Byte>(bytes[i] - predict(bytes[i - pixel], above[i], above[i - pixel]));
}

KESTRIVANE_INLINE void applyFilter(Filter filter, const FilterRow& row, Byte* target) {
  switch (filter) {
    case Filter::none:
      std::copy(row.bytes.begin(), row.bytes.end(), target);
      return;
    case Filter::sub:
      return applyPrediction<predictSub>(row, target);
    case Filter::up:
      return applyPrediction<predictUp>(row, target);
    case Filter::average:
      return applyPrediction<predictAverage>(row, target);
    case Filter::paeth:
      return applyPrediction<predictPaeth>(row, target);
  }
}

/// The absolute value of a difference that is stored as a byte.
KESTRIVANE_INLINE Byte magnitude(int difference) {
  const auto byte = static_cast<Byte>(difference);
  return std::min(byte, static_cast<Byte>(-byte));
}

using Sums = std::array<std::uint32_t, 5>;

KESTRIVANE_INLINE void addMagnitudes(const Byte* bytes, const Byte* above, std::size_t pixel,
                                     std::size_t begin, std::size_t end, Sums& sums) {
  std::uint32_t none = 0;
  std::uint32_t sub = 0;
  std::uint32_t up = 0;
  std::uint32_t average = 0;
  std::uint32_t paeth = 0;
  for (std::size_t i = begin; i < end; ++i) {
    const Byte left = bytes[i - pixel];
    const Byte corner = above[i - pixel];
    none += magnitude(bytes[i]);
    sub += magnitude(bytes[i] - left);
    up += magnitude(bytes[i] - above[i]);
    average += magnitude(bytes[i] - predictAverage(left, above[i], corner));
    paeth += magnitude(bytes[i] - predictPaeth(left, above[i], corner));
  }
  sums = {sums[0] + none, sums[1] + sub, sums[2] + up, sums[3] + average, sums[4] + paeth};
}

KESTRIVANE_INLINE Filter bestFilter(const FilterRow& row) {
  // The first pixel is left out: it has no left neighbour and hardly weighs.
  Sums sums{};
  addMagnitudes(row.bytes.data(), row.above, row.bytesPerPixel, row.bytesPerPixel, row.bytes.size(),
                sums);
  return static_cast<Filter>(std::ranges::min_element(sums) - sums.begin());
}

Filter bestPortable(const FilterRow& row) {
  return bestFilter(row);
}
void applyPortable(Filter filter, const FilterRow& row, Byte* target) {
  applyFilter(filter, row, target);
}

#ifdef __x86_64__
[[gnu::target("avx2")]] Filter bestAVX2(const FilterRow& row) {
  return bestFilter(row);
}
[[gnu::target("avx2")]] void applyAVX2(Filter filter, const FilterRow& row, Byte* target) {
  applyFilter(filter, row, target);
}
constexpr FilterLoops avx2FilterLoops{bestAVX2, applyAVX2};
#endif

}  // namespace

const FilterLoops portableFilterLoops{bestPortable, applyPortable};

const FilterLoops& fastestFilterLoops() {
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx2") != 0) return avx2FilterLoops;
#endif
  return portableFilterLoops;
}

}  // namespace kestrivane::png

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngUnfilter.hpp"

#include <algorithm>
#include <cstring>

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace kestrivane::png {
namespace {

using Byte = std::uint8_t;

/// From byte `begin` on, with which a pixel starts.
template <auto predict>
KESTRIVANE_INLINE void undo(const StoredRow& row, Byte* __restrict target, std::size_t begin = 0) {
  const Byte* const bytes = row.bytes.data();
  const Byte* const above = row.above;
  const std::size_t pixel = row.bytesPerPixel;
  const std::size_t count = row.bytes.size();
  const std::size_t first = begin == 0 ? std::min(pixel, count) : begin;
  for (std::size_t i = begin; i < first; ++i)
    target[i] = static_cast<Byte>(bytes[i] + predict(0, above[i], 0));
  for (std::size_t i = first; i < count; ++i)
    target[i] =
        static_cast<Byte>(bytes[i] + predict(target[i - pixel], above[i], above[i - pixel]));
}

#ifdef __x86_64__

// A pixel lies in the lowest bytes of a register. What is read and written beyond it belongs to the
// next pixel, whose turn is yet to come; the last pixels of a row, where that would be outside, are
// left to the portable loop.
#define KESTRIVANE_AVX2 [[gnu::target("avx2")]]

template <std::size_t pixel>
constexpr std::size_t movedBytes = pixel <= 4 ? 4 : 8;

template <std::size_t pixel>
KESTRIVANE_AVX2 KESTRIVANE_INLINE __m128i load(const Byte* bytes) {
  std::int64_t value = 0;
  std::memcpy(&value, bytes, movedBytes<pixel>);
  return _mm_cvtsi64_si128(value);
}

template <std::size_t pixel>
KESTRIVANE_AVX2 KESTRIVANE_INLINE void store(__m128i value, Byte* bytes) {
  const std::int64_t low = _mm_cvtsi128_si64(value);
  std::memcpy(bytes, &low, movedBytes<pixel>);
}

template <std::size_t pixel>
KESTRIVANE_AVX2 void undoSub(const StoredRow& row, Byte* target) {
  std::size_t i = 0;
  __m128i left = _mm_setzero_si128();
  for (; i + movedBytes<pixel> <= row.bytes.size(); i += pixel) {
    left = _mm_add_epi8(left, load<pixel>(row.bytes.data() + i));
    store<pixel>(left, target + i);
  }
  undo<predictSub>(row, target, i);
}

template <std::size_t pixel>
KESTRIVANE_AVX2 void undoAverage(const StoredRow& row, Byte* target) {
  const __m128i one = _mm_set1_epi8(1);
  std::size_t i = 0;
  __m128i left = _mm_setzero_si128();
  for (; i + movedBytes<pixel> <= row.bytes.size(); i += pixel) {
    const __m128i above = load<pixel>(row.above + i);
    // The instruction rounds up.
    const __m128i rounding = _mm_and_si128(_mm_xor_si128(left, above), one);
    const __m128i average = _mm_sub_epi8(_mm_avg_epu8(left, above), rounding);
    left = _mm_add_epi8(average, load<pixel>(row.bytes.data() + i));
    store<pixel>(left, target + i);
  }
  undo<predictAverage>(row, target, i);
}

template <std::size_t pixel>
KESTRIVANE_AVX2 void undoPaeth(const StoredRow& row, Byte* target) {
  std::size_t i = 0;
  // Here each byte has sixteen bits of its own.
  const __m128i zero = _mm_setzero_si128();
  __m128i left = zero;
  __m128i corner = zero;
  for (; i + movedBytes<pixel> <= row.bytes.size(); i += pixel) {
    const __m128i above = _mm_unpacklo_epi8(load<pixel>(row.above + i), zero);
    const __m128i stored = _mm_unpacklo_epi8(load<pixel>(row.bytes.data() + i), zero);
    const __m128i stepDown = _mm_sub_epi16(above, corner);
    const __m128i stepAside = _mm_sub_epi16(left, corner);
    const __m128i fromLeft = _mm_abs_epi16(stepDown);
    const __m128i fromAbove = _mm_abs_epi16(stepAside);
    const __m128i fromCorner = _mm_abs_epi16(_mm_add_epi16(stepDown, stepAside));
    const __m128i least = _mm_min_epi16(_mm_min_epi16(fromLeft, fromAbove), fromCorner);
    const __m128i other = _mm_blendv_epi8(corner, above, _mm_cmpeq_epi16(fromAbove, least));
    const __m128i nearest = _mm_blendv_epi8(other, left, _mm_cmpeq_epi16(fromLeft, least));
    left = _mm_add_epi8(nearest, stored);
    corner = above;
    store<pixel>(_mm_packus_epi16(left, left), target + i);
  }
  undo<predictPaeth>(row, target, i);
}

template <std::size_t pixel>
void unfilterWholePixels(Filter filter, const StoredRow& row, Byte* target) {
  switch (filter) {
    case Filter::sub:
      return undoSub<pixel>(row, target);
    case Filter::average:
      return undoAverage<pixel>(row, target);
    case Filter::paeth:
      return undoPaeth<pixel>(row, target);
    default:
      return unfilterPortably(filter, row, target);
  }
}

void unfilterAVX2(Filter filter, const StoredRow& row, Byte* target) {
  switch (row.bytesPerPixel) {
    case 3:
      return unfilterWholePixels<3>(filter, row, target);
    case 4:
      return unfilterWholePixels<4>(filter, row, target);
    case 6:
      return unfilterWholePixels<6>(filter, row, target);
    case 8:
      return unfilterWholePixels<8>(filter, row, target);
    default:
      return unfilterPortably(filter, row, target);
  }
}

#endif

}  // namespace

void unfilterPortably(Filter filter, const StoredRow& row, Byte* target) {
  switch (filter) {
    case Filter::none:
      std::copy(row.bytes.begin(), row.bytes.end(), target);
      return;
    case Filter::sub:
      return undo<predictSub>(row, target);
    case Filter::up:
      return undo<predictUp>(row, target);
    case Filter::average:
      return undo<predictAverage>(row, target);
    case Filter::paeth:
      return undo<predictPaeth>(row, target);
  }
}

Unfilter fastestUnfilter() {
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx2") != 0) return unfilterAVX2;
#endif
  return unfilterPortably;
}

}  // namespace kestrivane::png

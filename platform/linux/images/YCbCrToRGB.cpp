#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/YCbCrToRGB.hpp"

#include <algorithm>

// The loops are written so that the compiler turns them into vector instructions; the build asks
// for the optimisation level that this takes.
#define KESTRIVANE_INLINE [[gnu::always_inline]] inline

namespace kestrivane::heic {
namespace {

/// So many pixels are converted at once that what is in between stays in the nearest cache.
constexpr std::size_t blockPixels = 256;

template <typename Sample>
using Block = std::array<Sample, blockPixels>;

template <typename Sample>
KESTRIVANE_INLINE void doubled(const Sample* source, std::size_t pixels, Sample* target) {
  for (std::size_t i = 0; i < pixels / 2; ++i) {
    target[2 * i] = source[i];
    target[2 * i + 1] = source[i];
  }
  if (pixels % 2 != 0) target[pixels - 1] = source[pixels / 2];
}

template <typename Sample>
KESTRIVANE_INLINE void mix(const std::array<float, 4>& weights, int largest, const Sample* y,
                           const Sample* cb, const Sample* cr, std::size_t pixels, Sample* target) {
  for (std::size_t i = 0; i < pixels; ++i) {
    const float value = weights[0] * static_cast<float>(y[i]) +
                        weights[1] * static_cast<float>(cb[i]) +
                        weights[2] * static_cast<float>(cr[i]) + weights[3];
    target[i] = static_cast<Sample>(std::clamp(static_cast<int>(value), 0, largest));
  }
}

template <typename Sample>
KESTRIVANE_INLINE void convertColours(const YCbCrMatrix& matrix, const YCbCrRow<Sample>& row,
                                      std::size_t begin, std::size_t pixels, Sample* target) {
  Block<Sample> blue;
  Block<Sample> red;
  const Sample* cb = row.blue + begin;
  const Sample* cr = row.red + begin;
  if (row.isHalvedAcross) {
    doubled(row.blue + begin / 2, pixels, blue.data());
    doubled(row.red + begin / 2, pixels, red.data());
    cb = blue.data();
    cr = red.data();
  }
  std::array<Block<Sample>, 3> channels;
  for (std::size_t c = 0; c < channels.size(); ++c)
    mix(matrix.channels[c], matrix.largest, row.brightness + begin, cb, cr, pixels,
        channels[c].data());
  if (row.alpha == nullptr) {
    for (std::size_t i = 0; i < pixels; ++i)
      for (std::size_t c = 0; c < 3; ++c)
        target[3 * i + c] = channels[c][i];
  } else {
    for (std::size_t i = 0; i < pixels; ++i) {
      for (std::size_t c = 0; c < 3; ++c)
        target[4 * i + c] = channels[c][i];
      target[4 * i + 3] = row.alpha[begin + i];
    }
  }
}

template <typename Sample>
KESTRIVANE_INLINE void convertGrey(const YCbCrMatrix& matrix, const YCbCrRow<Sample>& row,
                                   std::size_t begin, std::size_t pixels, Sample* target) {
  const Sample* const y = row.brightness + begin;
  Block<Sample> grey;
  mix(matrix.channels[0], matrix.largest, y, y, y, pixels, grey.data());
  if (row.alpha == nullptr) {
    std::copy_n(grey.data(), pixels, target);
  } else {
    for (std::size_t i = 0; i < pixels; ++i) {
      target[2 * i] = grey[i];
      target[2 * i + 1] = row.alpha[begin + i];
    }
  }
}

template <typename Sample>
KESTRIVANE_INLINE void convert(const YCbCrMatrix& matrix, const YCbCrRow<Sample>& row,
                               std::size_t pixels, Sample* target) {
  const bool isGrey = row.blue == nullptr;
  const std::size_t channels = std::size_t{isGrey ? 1U : 3U} + (row.alpha == nullptr ? 0 : 1);
  for (std::size_t begin = 0; begin < pixels; begin += blockPixels) {
    const std::size_t count = std::min(blockPixels, pixels - begin);
    if (isGrey)
      convertGrey(matrix, row, begin, count, target + begin * channels);
    else
      convertColours(matrix, row, begin, count, target + begin * channels);
  }
}

void convert8Portable(const YCbCrMatrix& matrix, const YCbCrRow<std::uint8_t>& row,
                      std::size_t pixels, std::uint8_t* target) {
  convert(matrix, row, pixels, target);
}
void convert16Portable(const YCbCrMatrix& matrix, const YCbCrRow<std::uint16_t>& row,
                       std::size_t pixels, std::uint16_t* target) {
  convert(matrix, row, pixels, target);
}

#ifdef __x86_64__
[[gnu::target("avx2")]] void convert8AVX2(const YCbCrMatrix& matrix,
                                          const YCbCrRow<std::uint8_t>& row, std::size_t pixels,
                                          std::uint8_t* target) {
  convert(matrix, row, pixels, target);
}
[[gnu::target("avx2")]] void convert16AVX2(const YCbCrMatrix& matrix,
                                           const YCbCrRow<std::uint16_t>& row, std::size_t pixels,
                                           std::uint16_t* target) {
  convert(matrix, row, pixels, target);
}
constexpr YCbCrLoops avx2YCbCrLoops{convert8AVX2, convert16AVX2};
#endif

struct Weights {
  double red;
  double blue;
};

/// ITU-T H.273, table 4.
Weights weightsOf(int matrix) {
  switch (matrix) {
    case 1:
      return {0.2126, 0.0722};
    case 4:
      return {0.30, 0.11};
    case 7:
      return {0.212, 0.087};
    case 9:
    case 10:
      return {0.2627, 0.0593};
    default:
      return {0.299, 0.114};
  }
}

using Rows = std::array<std::array<double, 3>, 3>;

/// What red, green and blue are of brightness (0 to 1) and the differences (-0.5 to 0.5).
Rows rowsOf(int matrix) {
  constexpr int identity = 0;
  constexpr int YCgCo = 8;
  if (matrix == identity) return {{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}};
  if (matrix == YCgCo) return {{{1, -1, 1}, {1, 1, 0}, {1, -1, -1}}};
  const auto [red, blue] = weightsOf(matrix);
  const double green = 1 - red - blue;
  const double fromBlue = 2 * (1 - blue);
  const double fromRed = 2 * (1 - red);
  return {
      {{1, 0, fromRed}, {1, -fromBlue * blue / green, -fromRed * red / green}, {1, fromBlue, 0}}};
}

}  // namespace

const YCbCrLoops portableYCbCrLoops{convert8Portable, convert16Portable};

const YCbCrLoops& fastestYCbCrLoops() {
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx2") != 0) return avx2YCbCrLoops;
#endif
  return portableYCbCrLoops;
}

YCbCrMatrix YCbCrMatrix::make(const HevcSignal& signal, const HevcFormat& format) {
  const double full = format.bits > 8 ? 65'535 : 255;
  const double step = 1 << (format.bits - 8);
  const double largest = (1 << format.bits) - 1;
  const double black = signal.isFullRange ? 0 : 16 * step;
  const double brightness = full / (signal.isFullRange ? largest : 219 * step);
  // Numbers of the identity are no differences: all three have the range of brightness.
  const bool isIdentity = signal.matrix == 0;
  const double difference =
      isIdentity ? brightness : full / (signal.isFullRange ? largest : 224 * step);
  const double none = isIdentity ? black : 128 * step;
  const bool isGrey = format.chroma == Chroma::none;
  YCbCrMatrix result;
  result.largest = static_cast<int>(full);
  for (std::size_t c = 0; c < 3; ++c) {
    const auto row = isGrey ? std::array<double, 3>{1, 0, 0} : rowsOf(signal.matrix)[c];
    const std::array weights = {row[0] * brightness, row[1] * difference, row[2] * difference};
    const double constant = 0.5 - weights[0] * black - (weights[1] + weights[2]) * none;
    result.channels[c] = {static_cast<float>(weights[0]), static_cast<float>(weights[1]),
                          static_cast<float>(weights[2]), static_cast<float>(constant)};
  }
  return result;
}

}  // namespace kestrivane::heic

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/TiffSamples.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kestrivane::tiff {
namespace {

constexpr std::uint32_t full = 65'535;

std::size_t colorSamples(const Format& format) {
  switch (format.photometric) {
    case PHOTOMETRIC_RGB:
      return 3;
    case PHOTOMETRIC_SEPARATED:
      return 4;
    default:
      return 1;
  }
}

bool hasAlpha(const Format& format) {
  return format.samples > colorSamples(format) &&
         (format.photometric == PHOTOMETRIC_RGB || format.photometric == PHOTOMETRIC_MINISBLACK) &&
         (format.firstExtra == EXTRASAMPLE_ASSOCALPHA ||
          format.firstExtra == EXTRASAMPLE_UNASSALPHA);
}

/// Whether a row of the file is a row of the picture.
bool isCopied(const Format& format, PixelLayout layout) {
  return (format.bits == 8 || format.bits == 16) && format.planes == 1 &&
         (format.photometric == PHOTOMETRIC_RGB || format.photometric == PHOTOMETRIC_MINISBLACK) &&
         format.samples == layout.channelCount() &&
         !(layout.hasAlpha() && format.firstExtra == EXTRASAMPLE_ASSOCALPHA);
}

std::uint16_t fromUnit(double value) {
  // A value that is no number becomes 0.
  return value > 0 ? static_cast<std::uint16_t>(std::lround(std::min(value, 1.0) * full)) : 0;
}

template <typename Sample>
Sample load(const std::uint8_t* row, std::size_t index) {
  Sample sample;
  std::memcpy(&sample, row + index * sizeof(Sample), sizeof(Sample));
  return sample;
}

/// Sample `index` of a row of samples of less than sixteen bits, the first in the highest bits.
std::uint32_t loadBits(const std::uint8_t* row, std::size_t index, unsigned bits) {
  std::uint32_t value = 0;
  for (std::size_t bit = index * bits; bit < (index + 1) * bits; ++bit)
    value = value << 1 | (std::uint32_t{row[bit / 8]} >> (7 - bit % 8) & 1U);
  return value;
}

/// Sample `index` as a number up to 65535, or as it is when it is an index into a palette.
std::uint16_t sampleAt(const Format& format, const std::uint8_t* row, std::size_t index) {
  if (format.sampleFormat == SAMPLEFORMAT_IEEEFP)
    return fromUnit(format.bits == 32 ? static_cast<double>(load<float>(row, index))
                                      : load<double>(row, index));
  if (format.bits == 16) return load<std::uint16_t>(row, index);
  if (format.bits == 32) return static_cast<std::uint16_t>(load<std::uint32_t>(row, index) >> 16);
  const std::uint32_t value = format.bits == 8 ? row[index] : loadBits(row, index, format.bits);
  if (format.photometric == PHOTOMETRIC_PALETTE) return static_cast<std::uint16_t>(value);
  const std::uint32_t largest = (1U << format.bits) - 1;
  return static_cast<std::uint16_t>((value * full + largest / 2) / largest);
}

std::uint16_t withoutAlpha(std::uint32_t color, std::uint32_t alpha) {
  if (alpha == 0) return 0;
  return static_cast<std::uint16_t>(
      std::min((color * std::uint64_t{full} + alpha / 2) / alpha, std::uint64_t{full}));
}

}  // namespace

bool isReadDirectly(const Format& format) {
  if (format.samples < colorSamples(format)) return false;
  const bool isFloat = format.sampleFormat == SAMPLEFORMAT_IEEEFP;
  const bool isWhole =
      format.sampleFormat == SAMPLEFORMAT_UINT || format.sampleFormat == SAMPLEFORMAT_VOID;
  const bool depthIsKnown =
      (isFloat && (format.bits == 32 || format.bits == 64)) ||
      (isWhole && ((format.bits >= 1 && format.bits <= 16) || format.bits == 32));
  if (!depthIsKnown) return false;
  switch (format.photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_RGB:
      return true;
    case PHOTOMETRIC_PALETTE:
      return format.hasColorMap && isWhole && format.bits <= 8;
    case PHOTOMETRIC_SEPARATED:
      return format.inkSet == INKSET_CMYK;
    default:
      return false;
  }
}

PixelLayout layoutOf(const Format& format) {
  const Depth depth = format.bits > 8 ? Depth::sixteen : Depth::eight;
  const bool isGrey =
      format.photometric == PHOTOMETRIC_MINISWHITE || format.photometric == PHOTOMETRIC_MINISBLACK;
  if (hasAlpha(format)) return {isGrey ? Channels::greyAlpha : Channels::rgba, depth};
  return {isGrey ? Channels::grey : Channels::rgb, depth};
}

RowMaker::RowMaker(const Format& format, std::span<const std::uint8_t> profile)
    : format_(format),
      layout_(layoutOf(format)),
      cmyk_(profile, Depth::sixteen, InkPolarity::zeroIsNone) {
  if (format.photometric != PHOTOMETRIC_PALETTE) return;
  // Some programs write the colours of the map as numbers up to 255.
  const bool isWide = std::ranges::any_of(format.colorMap, [&](const std::uint16_t* map) {
    return std::any_of(map, map + (1U << format.bits), [](std::uint16_t c) { return c > 255; });
  });
  if (!isWide) mapScale_ = 257;
}

void RowMaker::make(const std::uint8_t* row, std::size_t planeBytes, std::size_t pixels,
                    std::uint8_t* target) {
  const std::size_t channels = pixels * layout_.channelCount();
  if (isCopied(format_, layout_)) {
    std::copy_n(row, channels * layout_.bytesPerChannel(), target);
    return;
  }
  unpack(row, planeBytes, pixels);
  makeColors(pixels);
  if (layout_.depth == Depth::sixteen)
    std::copy_n(colors_.begin(), channels, reinterpret_cast<std::uint16_t*>(target));
  else
    std::transform(colors_.begin(), colors_.begin() + static_cast<std::ptrdiff_t>(channels), target,
                   toEightBits);
}

void RowMaker::unpack(const std::uint8_t* row, std::size_t planeBytes, std::size_t pixels) {
  const std::size_t used = colorSamples(format_) + (layout_.hasAlpha() ? 1 : 0);
  const bool isPlanar = format_.planes > 1;
  samples_.resize(pixels * used);
  for (std::size_t sample = 0; sample < used; ++sample) {
    const std::uint8_t* const plane = isPlanar ? row + sample * planeBytes : row;
    for (std::size_t x = 0; x < pixels; ++x)
      samples_[x * used + sample] =
          sampleAt(format_, plane, isPlanar ? x : x * format_.samples + sample);
  }
}

void RowMaker::makeColors(std::size_t pixels) {
  colors_.resize(pixels * layout_.channelCount());
  switch (format_.photometric) {
    case PHOTOMETRIC_MINISWHITE:
      std::ranges::transform(samples_, colors_.begin(), [](std::uint16_t sample) {
        return static_cast<std::uint16_t>(full - sample);
      });
      return;
    case PHOTOMETRIC_PALETTE:
      for (std::size_t i = 0; i < colors_.size(); ++i)
        colors_[i] =
            static_cast<std::uint16_t>(format_.colorMap[i % 3][samples_[i / 3]] * mapScale_);
      return;
    case PHOTOMETRIC_SEPARATED:
      cmyk_.convert(reinterpret_cast<const std::uint8_t*>(samples_.data()),
                    reinterpret_cast<std::uint8_t*>(colors_.data()), pixels);
      return;
    default:
      std::ranges::copy(samples_, colors_.begin());
  }
  if (!layout_.hasAlpha() || format_.firstExtra != EXTRASAMPLE_ASSOCALPHA) return;
  const std::size_t channels = layout_.channelCount();
  for (std::size_t i = 0; i < colors_.size(); ++i)
    if (i % channels != channels - 1)
      colors_[i] = withoutAlpha(colors_[i], colors_[i / channels * channels + channels - 1]);
}

}  // namespace kestrivane::tiff

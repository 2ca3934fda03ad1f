#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PixelRows.hpp"

#include <cassert>
#include <limits>
#include <type_traits>
#include <utility>

namespace kestrivane {
namespace {

template <typename Channel>
constexpr std::uint32_t full = std::numeric_limits<Channel>::max();

template <typename From, typename To>
To toDepth(std::uint32_t value) {
  if constexpr (sizeof(From) < sizeof(To)) return static_cast<To>(value * 257);
  if constexpr (sizeof(From) > sizeof(To)) return toEightBits(value);
  return static_cast<To>(value);
}

/// `value` laid over white with `alpha`, rounded to the nearest.
template <typename Channel>
std::uint32_t overWhite(std::uint32_t value, std::uint32_t alpha) {
  constexpr std::uint64_t white = full<Channel>;
  return static_cast<std::uint32_t>(
      (value * std::uint64_t{alpha} + white * (white - alpha) + white / 2) / white);
}

template <typename From, typename To, std::size_t fromChannels, std::size_t toChannels>
void convertPixels(const std::uint8_t* sourceRow, std::uint8_t* targetRow, std::size_t pixels) {
  constexpr bool fromAlpha = fromChannels % 2 == 0;
  constexpr bool toAlpha = toChannels % 2 == 0;
  constexpr std::size_t toColors = toChannels - (toAlpha ? 1 : 0);
  const auto* source = reinterpret_cast<const From*>(sourceRow);
  auto* target = reinterpret_cast<To*>(targetRow);
  for (std::size_t i = 0; i < pixels; ++i, source += fromChannels, target += toChannels) {
    const std::uint32_t alpha = fromAlpha ? source[fromChannels - 1] : full<From>;
    for (std::size_t c = 0; c < toColors; ++c) {
      std::uint32_t value = source[fromChannels < 3 ? 0 : c];
      if constexpr (fromAlpha && !toAlpha) value = overWhite<From>(value, alpha);
      target[c] = toDepth<From, To>(value);
    }
    if constexpr (toAlpha) target[toColors] = toDepth<From, To>(alpha);
  }
}

using Conversion = void (*)(const std::uint8_t*, std::uint8_t*, std::size_t);

template <typename From, typename To, std::size_t fromChannels>
Conversion conversionTo(Channels to) {
  if constexpr (fromChannels < 3) {
    if (to == Channels::grey) return convertPixels<From, To, fromChannels, 1>;
    if (to == Channels::greyAlpha) return convertPixels<From, To, fromChannels, 2>;
  }
  assert(to == Channels::rgb || to == Channels::rgba);
  return to == Channels::rgb ? convertPixels<From, To, fromChannels, 3>
                             : convertPixels<From, To, fromChannels, 4>;
}

template <typename From, typename To>
Conversion conversionBetween(Channels from, Channels to) {
  switch (from) {
    case Channels::grey:
      return conversionTo<From, To, 1>(to);
    case Channels::greyAlpha:
      return conversionTo<From, To, 2>(to);
    case Channels::rgb:
      return conversionTo<From, To, 3>(to);
    default:
      return conversionTo<From, To, 4>(to);
  }
}

Conversion conversionBetween(PixelLayout from, PixelLayout to) {
  if (from.depth == Depth::eight)
    return to.depth == Depth::eight
               ? conversionBetween<std::uint8_t, std::uint8_t>(from.channels, to.channels)
               : conversionBetween<std::uint8_t, std::uint16_t>(from.channels, to.channels);
  return to.depth == Depth::eight
             ? conversionBetween<std::uint16_t, std::uint8_t>(from.channels, to.channels)
             : conversionBetween<std::uint16_t, std::uint16_t>(from.channels, to.channels);
}

/// Rows of sixteen-bit channels start at an even address.
std::size_t aligned(std::size_t bytes) {
  return (bytes + 15) / 16 * 16;
}

}  // namespace

PixelRows::PixelRows(std::shared_ptr<const PixelBuffer> source, PixelRegion region,
                     PixelLayout layout, ProfileSupport profileSupport)
    : source_(std::move(source)), region_(region), layout_(layout) {
  assert(layout.isGrey() <= source_->layout().isGrey() && "colours are not made grey");
  keepsProfile_ =
      profileSupport == ProfileSupport::embedded && layout.isGrey() == source_->layout().isGrey();
  if (!keepsProfile_) toSRGB_ = ColorTransform::toSRGB(source_->iccProfile, source_->layout());
  if (layout != source_->layout()) convert_ = conversionBetween(source_->layout(), layout);
}

std::span<const std::uint8_t> PixelRows::iccProfile() const {
  return keepsProfile_ ? std::span(source_->iccProfile) : std::span<const std::uint8_t>();
}

const std::uint8_t* PixelRows::row(std::size_t y, std::uint8_t* scratch) const {
  const std::uint8_t* row =
      source_->row(region_.y + y) + region_.x * source_->layout().bytesPerPixel();
  if (toSRGB_) {
    std::uint8_t* const colored = convert_ != nullptr ? scratch + aligned(rowBytes()) : scratch;
    toSRGB_->convert(row, colored, width());
    row = colored;
  }
  if (convert_ == nullptr) return row;
  convert_(row, scratch, width());
  return scratch;
}

std::size_t PixelRows::scratchBytes() const {
  return aligned(rowBytes()) + aligned(width() * source_->layout().bytesPerPixel());
}

const std::uint8_t* PixelRows::wholePicture() const {
  return toSRGB_ || convert_ != nullptr ? nullptr : row(0, nullptr);
}

}  // namespace kestrivane

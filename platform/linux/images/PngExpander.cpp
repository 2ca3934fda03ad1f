#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngExpander.hpp"

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/linux/images/ImageError.hpp"

namespace kestrivane::png {
namespace {

/// 16 bits a channel, as the machine has them.
void copyInByteOrder(const std::uint8_t* source, std::size_t count, std::uint8_t* target) {
  for (std::size_t i = 0; i < count; i += 2) {
    const auto value = static_cast<std::uint16_t>(source[i] << 8 | source[i + 1]);
    std::memcpy(target + i, &value, sizeof value);
  }
}

/// Pixels of `stored` bytes, to which alpha is added: none where they are equal to `key`.
template <std::size_t stored, Depth depth>
void addAlpha(const std::uint8_t* row, const std::uint8_t* key, std::size_t pixels,
              std::uint8_t* target) {
  constexpr std::size_t alphaBytes = depth == Depth::sixteen ? 2 : 1;
  for (std::size_t i = 0; i < pixels; ++i, row += stored, target += stored + alphaBytes) {
    if constexpr (depth == Depth::sixteen)
      copyInByteOrder(row, stored, target);
    else
      std::copy_n(row, stored, target);
    std::fill_n(target + stored, alphaBytes, std::equal(row, row + stored, key) ? 0 : 0xFF);
  }
}

}  // namespace

Expander::Expander(const Header& header) : header_(header) {
  const std::size_t highest = (std::size_t{1} << std::min<std::size_t>(header.bitDepth, 8)) - 1;
  const bool isGrey = header.colorType == ColorType::grey;
  // Values beyond the end of a palette are black.
  for (std::size_t value = 0; value < table_.size(); ++value) {
    const auto level =
        static_cast<std::uint8_t>(isGrey ? std::min(value, highest) * 255 / highest : 0);
    table_[value] = {level, level, level, 0xFF};
  }
}

void Expander::setPalette(std::span<const std::uint8_t> content) {
  const std::size_t count = content.size() / 3;
  if (colorCount_ > 0 || count == 0 || count > table_.size() || content.size() % 3 != 0)
    throw ImageError("the PNG's palette is damaged");
  colorCount_ = std::min(count, std::size_t{1} << header_.bitDepth);
  if (header_.colorType == ColorType::palette)
    for (std::size_t i = 0; i < colorCount_; ++i)
      std::copy_n(content.begin() + static_cast<std::ptrdiff_t>(i * 3), 3, table_[i].begin());
}

void Expander::setTransparency(std::span<const std::uint8_t> content) {
  if (hasTransparency_) return;
  const bool isDeep = header_.bitDepth == 16;
  switch (header_.colorType) {
    case ColorType::palette:
      if (content.empty() || content.size() > colorCount_) return;
      for (std::size_t i = 0; i < content.size(); ++i)
        table_[i][3] = content[i];
      break;
    case ColorType::grey:
      if (content.size() != 2) return;
      std::ranges::copy(content, key_.begin());
      if (!isDeep) table_[content[1] & ((1U << header_.bitDepth) - 1)][3] = 0;
      break;
    case ColorType::rgb:
      if (content.size() != 6) return;
      // Each channel takes two bytes, of which pixels of eight bits have the low one.
      for (std::size_t i = 0; i < (isDeep ? 6 : 3); ++i)
        key_[i] = content[isDeep ? i : i * 2 + 1];
      break;
    default:
      return;
  }
  hasTransparency_ = true;
}

PixelLayout Expander::layout() const {
  const Depth depth = header_.bitDepth == 16 ? Depth::sixteen : Depth::eight;
  switch (header_.colorType) {
    case ColorType::grey:
      return {hasTransparency_ ? Channels::greyAlpha : Channels::grey, depth};
    case ColorType::greyAlpha:
      return {Channels::greyAlpha, depth};
    case ColorType::rgba:
      return {Channels::rgba, depth};
    default:
      return {hasTransparency_ ? Channels::rgba : Channels::rgb, depth};
  }
}

bool Expander::usesTable() const {
  return header_.colorType == ColorType::palette ||
         (header_.colorType == ColorType::grey &&
          (header_.bitDepth < 8 || (header_.bitDepth == 8 && hasTransparency_)));
}

/// Leaves out the channels that grey does not have.
template <std::size_t channels>
void Expander::lookUp(const std::uint8_t* row, std::size_t pixels, std::uint8_t* target) const {
  constexpr bool hasAlpha = channels % 2 == 0;
  constexpr std::size_t colors = hasAlpha ? channels - 1 : channels;
  const std::size_t depth = header_.bitDepth;
  const std::size_t mask = (std::size_t{1} << depth) - 1;
  for (std::size_t i = 0; i < pixels; ++i, target += channels) {
    const std::size_t bit = i * depth;
    const Color& color = table_[row[bit / 8] >> (8 - depth - bit % 8) & mask];
    std::copy_n(color.begin(), colors, target);
    if constexpr (hasAlpha) target[colors] = color[3];
  }
}

void Expander::expand(const std::uint8_t* row, std::size_t pixels, std::uint8_t* target) const {
  const PixelLayout expanded = layout();
  const bool isDeep = expanded.depth == Depth::sixteen;
  if (usesTable()) {
    switch (expanded.channels) {
      case Channels::grey:
        return lookUp<1>(row, pixels, target);
      case Channels::greyAlpha:
        return lookUp<2>(row, pixels, target);
      case Channels::rgb:
        return lookUp<3>(row, pixels, target);
      case Channels::rgba:
        return lookUp<4>(row, pixels, target);
    }
  }
  if (hasTransparency_) {
    if (!isDeep) return addAlpha<3, Depth::eight>(row, key_.data(), pixels, target);
    if (expanded.isGrey()) return addAlpha<2, Depth::sixteen>(row, key_.data(), pixels, target);
    return addAlpha<6, Depth::sixteen>(row, key_.data(), pixels, target);
  }
  const std::size_t count = pixels * expanded.bytesPerPixel();
  if (isDeep) return copyInByteOrder(row, count, target);
  std::copy_n(row, count, target);
}

}  // namespace kestrivane::png

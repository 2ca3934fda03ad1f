#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/UprightRows.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <type_traits>
#include <utility>

namespace kestrivane {
namespace {

constexpr std::size_t bandRows = 32;

template <typename... Values>
bool isOneOf(Orientation orientation, Values... values) {
  return ((orientation == values) || ...);
}

bool isTurned(Orientation orientation) {
  using enum Orientation;
  return isOneOf(orientation, leftTop, rightTop, rightBottom, leftBottom);
}

/// Calls `function` with a pixel of that size.
template <typename Function>
void withPixelOf(std::size_t bytes, Function function) {
  const auto call = [&]<std::size_t size>(std::integral_constant<std::size_t, size>) {
    if (bytes == size) function(std::array<std::uint8_t, size>{});
  };
  [&]<std::size_t... sizes>(std::index_sequence<sizes...>) {
    (call(std::integral_constant<std::size_t, sizes>{}), ...);
  }
  (std::index_sequence<1, 2, 3, 4, 6, 8>{});
}

}  // namespace

void reversePixels(std::uint8_t* row, std::size_t pixels, PixelLayout layout) {
  withPixelOf(layout.bytesPerPixel(), [&](auto pixel) {
    auto* const first = reinterpret_cast<decltype(pixel)*>(row);
    std::reverse(first, first + pixels);
  });
}

UprightRows::UprightRows(std::size_t width, std::size_t height, PixelLayout layout,
                         Orientation orientation)
    : width_(width),
      height_(height),
      orientation_(orientation),
      picture_(isTurned(orientation) ? PixelBuffer::create(height, width, layout)
                                     : PixelBuffer::create(width, height, layout)) {
  if (isTurned(orientation))
    waiting_.resize(std::min(bandRows, height) * width * layout.bytesPerPixel());
}

std::uint8_t* UprightRows::next() {
  assert(done_ < height_);
  using enum Orientation;
  if (isTurned(orientation_))
    return waiting_.data() + done_ % bandRows * width_ * picture_.layout().bytesPerPixel();
  return picture_.row(isOneOf(orientation_, bottomRight, bottomLeft) ? height_ - 1 - done_ : done_);
}

void UprightRows::advance() {
  using enum Orientation;
  if (isOneOf(orientation_, topRight, bottomRight))
    reversePixels(next(), width_, picture_.layout());
  ++done_;
  if (!isTurned(orientation_)) return;
  if (done_ % bandRows == 0)
    placeColumns(bandRows);
  else if (done_ == height_)
    placeColumns(done_ % bandRows);
}

/// Makes columns of the latest `count` rows.
void UprightRows::placeColumns(std::size_t count) {
  using enum Orientation;
  const bool fromRight = isOneOf(orientation_, rightTop, rightBottom);
  const bool fromBottom = isOneOf(orientation_, rightBottom, leftBottom);
  const std::size_t first = done_ - count;
  withPixelOf(picture_.layout().bytesPerPixel(), [&](auto pixel) {
    using Pixel = decltype(pixel);
    const auto* const source = reinterpret_cast<const Pixel*>(waiting_.data());
    for (std::size_t x = 0; x < width_; ++x) {
      auto* const target = reinterpret_cast<Pixel*>(picture_.row(fromBottom ? width_ - 1 - x : x));
      for (std::size_t y = 0; y < count; ++y)
        target[fromRight ? height_ - 1 - first - y : first + y] = source[y * width_ + x];
    }
  });
}

}  // namespace kestrivane

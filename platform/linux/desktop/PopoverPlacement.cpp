#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/PopoverPlacement.hpp"

#include <algorithm>

namespace kestrivane {
namespace {

constexpr int gap = 4;

/// `wanted`, moved so that `length` from there stays between `low` and `high`, the start first.
int fit(int wanted, int length, int low, int high) {
  return std::max(low, std::min(wanted, high - length));
}

}  // namespace

QPoint placePopover(const QRect& anchor, const QRect& available, QSize size) {
  const QRect screen = available.adjusted(gap, gap, -gap, -gap);
  const int right = screen.x() + screen.width();
  const int bottom = screen.y() + screen.height();
  if (anchor.isEmpty()) return {fit(right, size.width(), screen.x(), right), screen.y()};

  const bool isInLowerHalf = anchor.center().y() > available.center().y();
  const int y =
      isInLowerHalf ? anchor.y() - gap - size.height() : anchor.y() + anchor.height() + gap;
  return {fit(anchor.center().x() - size.width() / 2, size.width(), screen.x(), right),
          fit(y, size.height(), screen.y(), bottom)};
}

}  // namespace kestrivane

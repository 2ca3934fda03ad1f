#include <gtest/gtest.h>

#include "platform/linux/desktop/PopoverPlacement.hpp"

namespace kestrivane::test {
namespace {

constexpr QSize popoverSize(360, 540);
/// 1000 x 800, with a panel of 24 at the top and one at the bottom.
constexpr QRect available(0, 24, 1000, 752);

TEST(PopoverPlacement, IsCentredBelowAnIconAtTheTop) {
  EXPECT_EQ(placePopover(QRect(500, 0, 24, 24), available, popoverSize), QPoint(331, 28));
}

TEST(PopoverPlacement, IsAboveAnIconAtTheBottom) {
  EXPECT_EQ(placePopover(QRect(500, 776, 24, 24), available, popoverSize),
            QPoint(331, 776 - 4 - 540));
}

TEST(PopoverPlacement, StaysOnTheScreenBesideItsEdges) {
  EXPECT_EQ(placePopover(QRect(976, 0, 24, 24), available, popoverSize),
            QPoint(1000 - 4 - 360, 28));
  EXPECT_EQ(placePopover(QRect(0, 0, 24, 24), available, popoverSize), QPoint(4, 28));
}

TEST(PopoverPlacement, IsOnTheScreenOfItsIcon) {
  const QRect second(1000, 0, 1000, 800);
  EXPECT_EQ(placePopover(QRect(1000, 0, 24, 24), second, popoverSize), QPoint(1004, 28));
}

TEST(PopoverPlacement, IsInTheUpperRightCornerWithoutAnIcon) {
  EXPECT_EQ(placePopover(QRect(), available, popoverSize), QPoint(1000 - 4 - 360, 28));
}

TEST(PopoverPlacement, ShowsItsUpperLeftPartWhereTheScreenIsTooSmall) {
  EXPECT_EQ(placePopover(QRect(100, 0, 24, 24), QRect(0, 24, 320, 400), popoverSize),
            QPoint(4, 28));
}

}  // namespace
}  // namespace kestrivane::test

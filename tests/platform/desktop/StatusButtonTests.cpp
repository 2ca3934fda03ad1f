// What the status item's button looks like while files are dragged over it.
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <memory>
#include <numbers>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "app/MenubarDragView.hpp"
#include "platform/linux/desktop/StatusButton.hpp"

namespace kestrivane::test {
namespace {

constexpr int side = 24;

class StatusButtonHighlight : public testing::TestWithParam<int> {
 protected:
  StatusButtonHighlight() { button.setDropTarget(std::make_unique<MenubarDragView>()); }

  /// The button without any image, `GetParam()` pixels for each point.
  QImage painted() const {
    QImage image(side * GetParam(), side * GetParam(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(GetParam());
    image.fill(Qt::transparent);
    QPainter painter(&image);
    button.paint(painter, QSizeF(side, side), Qt::black);
    return image;
  }

  /// How much of the square between two points is covered, in square points.
  double coverage(const QImage& image, int from, int to) const {
    double sum = 0;
    for (int y = from * GetParam(); y < to * GetParam(); ++y)
      for (int x = from * GetParam(); x < to * GetParam(); ++x)
        sum += image.pixelColor(x, y).alphaF();
    return sum / opacity / (GetParam() * GetParam());
  }

  static constexpr double opacity = 0.3;
  StatusButton button{[] { return false; }};
};

TEST_P(StatusButtonHighlight, IsTheAccentColourAtThirtyPercent) {
  button.dragEntered();
  const QColor middle = painted().pixelColor(side * GetParam() / 2, side * GetParam() / 2);
  const QColor accent = QGuiApplication::palette().color(QPalette::Highlight);
  EXPECT_NEAR(middle.alphaF(), opacity, 0.003);
  // Colours that are stored with their opacity are rounded.
  EXPECT_NEAR(middle.red(), accent.red(), 4);
  EXPECT_NEAR(middle.green(), accent.green(), 4);
  EXPECT_NEAR(middle.blue(), accent.blue(), 4);
}

TEST_P(StatusButtonHighlight, LeavesTwoPointsFreeOnEverySide) {
  button.dragEntered();
  const QImage image = painted();
  const int scale = GetParam();
  const int last = side * scale - 1;
  const int middle = side * scale / 2;
  const int border = 2 * scale;
  for (int i = 0; i < border; ++i) {
    for (const QPoint at :
         {QPoint(i, middle), QPoint(last - i, middle), QPoint(middle, i), QPoint(middle, last - i)})
      EXPECT_EQ(image.pixelColor(at).alpha(), 0) << i;
  }
  for (const QPoint at : {QPoint(border, middle), QPoint(last - border, middle),
                          QPoint(middle, border), QPoint(middle, last - border)})
    EXPECT_NEAR(image.pixelColor(at).alphaF(), opacity, 0.003);
}

TEST_P(StatusButtonHighlight, HasCornersWithARadiusOfFourPoints) {
  button.dragEntered();
  constexpr double radius = 4;
  // Of the square around the quarter circle, and a point more on each side in which all is covered.
  constexpr double missing = (1 - std::numbers::pi / 4) * radius * radius;
  EXPECT_NEAR(coverage(painted(), 2, 7), 25 - missing, 0.15);
}

TEST_P(StatusButtonHighlight, IsThereOnlyWhileADragIsOver) {
  const QImage nothing = painted();
  EXPECT_EQ(coverage(nothing, 0, side), 0);
  button.dragEntered();
  EXPECT_GT(coverage(painted(), 0, side), 0);
  button.dragExited();
  EXPECT_EQ(painted(), nothing);
  button.dragEntered();
  button.dropped(std::nullopt);
  EXPECT_EQ(painted(), nothing);
}

INSTANTIATE_TEST_SUITE_P(PixelsForEachPoint, StatusButtonHighlight, testing::Values(1, 2));

}  // namespace
}  // namespace kestrivane::test

#include "views/Panel.hpp"

#include <QPainterPath>
#include <algorithm>

namespace kestrivane {

namespace {

QBrush brush(const QColor& start, const QColor& end, const QRectF& area) {
  if (!end.isValid()) return start;
  QLinearGradient gradient(area.topLeft(), area.bottomRight());
  gradient.setStops({{0, start}, {1, end}});
  return gradient;
}

/// Each corner is one cubic curve that begins `reach` before the corner and has its handles
/// `handle` before it. All such curves pass through the middle of the quarter circle; with a reach
/// of one radius they are that quarter circle, and the longer the reach, the softer they leave the
/// edge.
QPainterPath roundedRectangle(const QRectF& r, qreal radius, bool continuous) {
  const qreal half = std::min(r.width(), r.height()) / 2;
  radius = std::min(radius, half);
  const qreal reach = std::min(continuous ? 1.5 * radius : radius, half);
  // The middle of the curve is (reach + 3 handle) / 8 from either edge, that of the circle
  // (1 - sqrt(1/2)) radius.
  const qreal handle = (8 * (1 - M_SQRT1_2) * radius - reach) / 3;

  QPainterPath path;
  const auto corner = [&](QPointF at, QPointF from, QPointF to) {
    const auto before = [&](QPointF direction, qreal distance) {
      return at - direction * distance;
    };
    if (path.elementCount() == 0) {
      path.moveTo(before(from, reach));
    } else {
      path.lineTo(before(from, reach));
    }
    path.cubicTo(before(from, handle), before(-to, handle), before(-to, reach));
  };
  const QPointF right(1, 0), down(0, 1);
  corner(r.topRight(), right, down);
  corner(r.bottomRight(), down, -right);
  corner(r.bottomLeft(), -right, -down);
  corner(r.topLeft(), -down, right);
  path.closeSubpath();
  return path;
}

}  // namespace

Panel::Panel(QQuickItem* parent) : DrawnItem(parent) {}

void Panel::draw(QPainter& painter) const {
  const QRectF area = boundingRect();
  if (fill_.isValid()) {
    painter.fillPath(roundedRectangle(area, radius_, continuous_), brush(fill_, fillEnd_, area));
  }
  if (outline_.isValid()) {
    const QRectF middle = area.adjusted(0.5, 0.5, -0.5, -0.5);
    painter.strokePath(roundedRectangle(middle, radius_ - 0.5, continuous_),
                       QPen(brush(outline_, outlineEnd_, area), 1));
  }
}

}  // namespace kestrivane

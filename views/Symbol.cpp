#include "views/Symbol.hpp"

#include <cmath>

#include "views/SymbolDrawing.hpp"

namespace kestrivane {

Symbol::Symbol(QQuickItem* parent) : DrawnItem(parent) {}

void Symbol::setSize(qreal size) {
  if (size == size_) return;
  size_ = size;
  const qreal side = 2 * std::round(0.6 * size);
  setImplicitSize(side, side);
  emit changed();
}

void Symbol::draw(QPainter& painter) const {
  // Everything is drawn pixel by pixel, so that nothing is scaled afterwards.
  const qreal scale = painter.deviceTransform().m11();
  const QSize pixels = (QSizeF(implicitWidth(), implicitHeight()) * scale).toSize();
  QLinearGradient gradient(0, 0, 0, pixels.height());
  gradient.setStops({{0, color_}, {1, colorEnd_.isValid() ? colorEnd_ : color_}});

  QImage canvas((boundingRect().size() * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
  canvas.fill(Qt::transparent);
  const QPoint corner = QRect(QPoint(), canvas.size()).center() - QRect(QPoint(), pixels).center();
  QPainter(&canvas).drawImage(corner, symbolImage(name_, pixels, gradient));

  if (shadowColor_.isValid()) {
    painter.drawImage(boundingRect().translated(0, shadowOffset_),
                      shadowOf(canvas, shadowColor_, shadowRadius_ * scale));
  }
  painter.drawImage(boundingRect(), canvas);
}

}  // namespace kestrivane

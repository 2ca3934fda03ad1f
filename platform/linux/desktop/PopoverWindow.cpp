#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/PopoverWindow.hpp"

#include <QKeyEvent>
#include <QPainterPath>
#include <QRegion>

namespace kestrivane {
namespace {

constexpr double cornerRadius = 10;

}  // namespace

void PopoverWindow::exposeEvent(QExposeEvent* event) {
  QQuickWindow::exposeEvent(event);
  if (isExposed() && onExposed) onExposed();
}

void PopoverWindow::keyPressEvent(QKeyEvent* event) {
  QQuickWindow::keyPressEvent(event);
  if (event->isAccepted() || event->key() != Qt::Key_Escape) return;
  event->accept();
  if (onEscape) onEscape();
}

void PopoverWindow::focusOutEvent(QFocusEvent* event) {
  QQuickWindow::focusOutEvent(event);
  if (onKeyboardLost) onKeyboardLost();
}

void PopoverWindow::resizeEvent(QResizeEvent* event) {
  QQuickWindow::resizeEvent(event);
  // Without a compositor there is no transparency, and round corners have to be cut.
  QPainterPath shape;
  shape.addRoundedRect(QRectF(QPointF(0, 0), size()), cornerRadius, cornerRadius);
  setMask(QRegion(shape.toFillPolygon().toPolygon()));
}

}  // namespace kestrivane

// From the pixels that the X server counts to Qt's coordinates, which have fewer units than pixels
// on dense screens.
//
// Thread-safety: for the main thread.
#pragma once

#include <QGuiApplication>
#include <QRect>
#include <QScreen>

namespace kestrivane {

/// The rectangle, or point, in Qt's coordinates. Qt keeps the corner of a screen and divides
/// distances from it.
inline QRect fromNativePixels(const QRect& native) {
  for (const QScreen* screen : QGuiApplication::screens()) {
    const double density = screen->devicePixelRatio();
    const QPoint corner = screen->geometry().topLeft();
    if (!QRect(corner, screen->geometry().size() * density).contains(native.center())) continue;
    return QRect(corner + (native.topLeft() - corner) / density, native.size() / density);
  }
  return native;
}

inline QPoint fromNativePixels(QPoint native) {
  return fromNativePixels(QRect(native, QSize(1, 1))).topLeft();
}

}  // namespace kestrivane

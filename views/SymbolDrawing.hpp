// Draws the symbols of resources/symbols in a colour of the caller's choice. A drawing has no
// colour of its own, only coverage: where a symbol has layers, the ones behind are less opaque in
// it.
//
// Thread-safety: may be called from any thread. Ownership: images are values.
#pragma once

#include <QBrush>
#include <QImage>
#include <QSize>
#include <QString>

namespace kestrivane {

/// The symbol `name` ("folder.fill") filled with `tint` at a size in pixels. When there is no such
/// symbol, "questionmark.app" stands in its place.
QImage symbolImage(const QString& name, QSize pixels, const QBrush& tint);

/// The shadow of an image: its coverage in `colour`, blurred by a Gaussian of half the `radius` (in
/// pixels) as its deviation. As large as the image: what would lie outside is cut off.
QImage shadowOf(const QImage& image, const QColor& colour, qreal radius);

}  // namespace kestrivane

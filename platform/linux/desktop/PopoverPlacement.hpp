// Where the popover goes: beside its icon, whole on the screen.
//
// Thread-safety: a function of its arguments.
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace kestrivane {

/// The upper left corner of a popover of `size` for the icon at `anchor`, on the screen whose part
/// free of panels is `available`: centred below the icon, above it when the icon is in the lower
/// half. Without an icon (an empty `anchor`), the upper right corner of the screen.
QPoint placePopover(const QRect& anchor, const QRect& available, QSize size);

}  // namespace kestrivane

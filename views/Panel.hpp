// A rounded rectangle with a fill and an outline, each of one colour or of a gradient from the top
// left to the bottom right corner. Qt Quick's own Rectangle shows seams at its corners when it is
// scaled in software, and has neither diagonal gradients nor gradient outlines.
//
// Thread-safety: main thread only. Ownership: owned by its parent item.
#pragma once

#include <QColor>

#include "views/DrawnItem.hpp"

namespace kestrivane {

class Panel : public DrawnItem {
  Q_OBJECT
  QML_ELEMENT
  /// Of the corners, in points; at most half of the shorter side is used.
  Q_PROPERTY(qreal radius MEMBER radius_ NOTIFY changed)
  /// True for corners that bend gradually, false for quarters of a circle.
  Q_PROPERTY(bool continuous MEMBER continuous_ NOTIFY changed)
  Q_PROPERTY(QColor fill MEMBER fill_ NOTIFY changed)
  /// Where the fill's gradient ends; the fill is of one colour when this is not set.
  Q_PROPERTY(QColor fillEnd MEMBER fillEnd_ NOTIFY changed)
  /// The outline is one point wide and lies inside the item. There is none when this is not set.
  Q_PROPERTY(QColor outline MEMBER outline_ NOTIFY changed)
  Q_PROPERTY(QColor outlineEnd MEMBER outlineEnd_ NOTIFY changed)

 public:
  explicit Panel(QQuickItem* parent = nullptr);

 private:
  void draw(QPainter& painter) const override;

  qreal radius_ = 0;
  bool continuous_ = false;
  QColor fill_, fillEnd_, outline_, outlineEnd_;
};

}  // namespace kestrivane

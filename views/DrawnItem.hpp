// An item that is drawn by QPainter, once, and shown as a texture. Unlike QQuickPaintedItem it
// stays smooth when it is scaled in software.
//
// Thread-safety: main thread only, except draw(). Ownership: owned by its parent item.
#pragma once

#include <QPainter>
#include <QQuickItem>

namespace kestrivane {

class DrawnItem : public QQuickItem {
  Q_OBJECT
  QML_ANONYMOUS

 public:
  /// For derived classes to emit when a property changed that the drawing depends on.
  Q_SIGNAL void changed();

 protected:
  explicit DrawnItem(QQuickItem* parent);

  /// Draws on a transparent ground, in points, the top left corner being the origin. May be called
  /// on the thread that renders, while the main thread waits.
  virtual void draw(QPainter& painter) const = 0;

  QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
  void itemChange(ItemChange change, const ItemChangeData& value) override;
};

}  // namespace kestrivane

// A symbol of resources/symbols as an item, drawn in one colour or in a gradient from top to
// bottom, crisp at every scale of the screen. It is centred in the item; an item larger than the
// symbol has room for the shadow.
//
// Thread-safety: main thread only. Ownership: owned by its parent item.
#pragma once

#include <QColor>
#include <QString>

#include "views/DrawnItem.hpp"

namespace kestrivane {

class Symbol : public DrawnItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString name MEMBER name_ NOTIFY changed)
  /// Of the text that the symbol goes with, in points. The drawing's square is a fifth larger, an
  /// even number of points: the implicit size of the item.
  Q_PROPERTY(qreal size READ size WRITE setSize NOTIFY changed)
  Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed)
  /// Where the gradient ends; there is none when this is not set.
  Q_PROPERTY(QColor colorEnd MEMBER colorEnd_ NOTIFY changed)
  /// There is no shadow when this is not set.
  Q_PROPERTY(QColor shadowColor MEMBER shadowColor_ NOTIFY changed)
  Q_PROPERTY(qreal shadowRadius MEMBER shadowRadius_ NOTIFY changed)
  /// How far the shadow falls below the symbol, in points.
  Q_PROPERTY(qreal shadowOffset MEMBER shadowOffset_ NOTIFY changed)

 public:
  explicit Symbol(QQuickItem* parent = nullptr);

  qreal size() const { return size_; }
  void setSize(qreal size);

 private:
  void draw(QPainter& painter) const override;

  QString name_;
  qreal size_ = 0;
  QColor color_, colorEnd_, shadowColor_;
  qreal shadowRadius_ = 0;
  qreal shadowOffset_ = 0;
};

}  // namespace kestrivane

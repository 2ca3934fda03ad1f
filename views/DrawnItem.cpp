#include "views/DrawnItem.hpp"

#include <QImage>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTexture>
#include <memory>

namespace kestrivane {

DrawnItem::DrawnItem(QQuickItem* parent) : QQuickItem(parent) {
  setFlag(ItemHasContents);
  connect(this, &DrawnItem::changed, this, &DrawnItem::update);
}

QSGNode* DrawnItem::updatePaintNode(QSGNode* node, UpdatePaintNodeData*) {
  const qreal scale = window()->effectiveDevicePixelRatio();
  QImage image((size() * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) {
    delete node;
    return nullptr;
  }
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(scale, scale);
  draw(painter);
  painter.end();

  auto* const shown = node ? static_cast<QSGImageNode*>(node) : window()->createImageNode();
  // The software renderer's node deletes the texture that it owns only when it goes itself.
  const std::unique_ptr<QSGTexture> former(shown->texture());
  shown->setOwnsTexture(false);
  shown->setTexture(window()->createTextureFromImage(image));
  shown->setOwnsTexture(true);
  shown->setFiltering(QSGTexture::Linear);
  shown->setRect(boundingRect());
  return shown;
}

void DrawnItem::itemChange(ItemChange change, const ItemChangeData& value) {
  if (change == ItemDevicePixelRatioHasChanged) update();
  QQuickItem::itemChange(change, value);
}

}  // namespace kestrivane

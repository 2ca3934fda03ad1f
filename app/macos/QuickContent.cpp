#include "app/macos/QuickContent.hpp"

#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

namespace kestrivane {

QuickContent::QuickContent(const ItemFactory& makeItem, void* parent, int width, int height)
    : engine_(std::make_unique<QQmlEngine>()),
      item_(makeItem(*engine_)),
      host_(QWindow::fromWinId(reinterpret_cast<WId>(parent))),
      window_(std::make_unique<QQuickWindow>()) {
  window_->setColor(Qt::transparent);  // over the popover's own material
  window_->setParent(host_.get());
  window_->setGeometry(0, 0, width, height);
  item_->setSize(QSizeF(width, height));
  item_->setParentItem(window_->contentItem());
  item_->forceActiveFocus();
}

QuickContent::~QuickContent() = default;

void QuickContent::show() {
  window_->show();
}

void QuickContent::hide() {
  window_->hide();
}

void* QuickContent::view() const {
  return reinterpret_cast<void*>(window_->winId());
}

}  // namespace kestrivane

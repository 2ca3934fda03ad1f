#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/TrayWindow.hpp"

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QPalette>

#include "platform/linux/desktop/ScreenCoordinates.hpp"
#include "platform/qt/DroppedFiles.hpp"

namespace kestrivane {
namespace {

/// The least that a tray may give to the icon, in points.
constexpr int leastSide = 22;
constexpr int darkBelow = 128;

}  // namespace

TrayWindow::TrayWindow(XConnection& connection, SystemTray& tray, StatusButton& button)
    : connection_(connection), tray_(tray), button_(button), hasAlpha_(tray.wantsAlpha()) {
  if (hasAlpha_) {
    QSurfaceFormat transparent = format();
    transparent.setAlphaBufferSize(8);
    setFormat(transparent);
  }
  setFlags(Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
  setTitle(QCoreApplication::applicationName());
  setMinimumSize(QSize(leastSide, leastSide));
  resize(leastSide, leastSide);
  create();

  button_.onChanged = [this] { update(); };
  button_.findAnchor = [this] { return findOnScreen(); };
  QCoreApplication::instance()->installNativeEventFilter(this);
  tray_.dock(id());
}

TrayWindow::~TrayWindow() {
  QCoreApplication::instance()->removeNativeEventFilter(this);
  button_.onChanged = nullptr;
  button_.findAnchor = nullptr;
}

bool TrayWindow::event(QEvent* event) {
  switch (event->type()) {
    case QEvent::DragEnter: {
      auto* drag = static_cast<QDragEnterEvent*>(event);
      isTakingDrag_ = offersFiles(*drag->mimeData());
      if (!isTakingDrag_) return false;
      drag->setDropAction(Qt::CopyAction);
      drag->accept();
      button_.dragEntered();
      return true;
    }
    case QEvent::DragMove: {
      if (!isTakingDrag_) return false;
      auto* drag = static_cast<QDragMoveEvent*>(event);
      drag->setDropAction(Qt::CopyAction);
      drag->accept();
      return true;
    }
    case QEvent::DragLeave:
      if (!isTakingDrag_) return false;
      button_.dragExited();
      return true;
    case QEvent::Drop: {
      auto* drop = static_cast<QDropEvent*>(event);
      drop->setDropAction(Qt::CopyAction);
      drop->setAccepted(button_.dropped(filesIn(*drop->mimeData())));
      return true;
    }
    default:
      return QRasterWindow::event(event);
  }
}

void TrayWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QRect everything(QPoint(0, 0), size());
  QColor tint = QGuiApplication::palette().color(QPalette::WindowText);
  if (hasAlpha_) {
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(everything, Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  } else if (const QImage behind = connection_.backgroundBehind(id()); !behind.isNull()) {
    painter.drawImage(everything, behind);
    const bool isDark = qGray(behind.pixel(0, 0)) < darkBelow;
    tint = isDark ? Qt::white : Qt::black;
  } else {
    painter.fillRect(everything, QGuiApplication::palette().color(QPalette::Window));
  }
  tint = tray_.foreground().value_or(tint);
  button_.paint(painter, size(), tint);
}

void TrayWindow::mouseReleaseEvent(QMouseEvent* event) {
  constexpr auto clicks = Qt::LeftButton | Qt::RightButton;
  if (clicks.testFlag(event->button())) button_.click();
}

bool TrayWindow::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (eventType != "xcb_generic_event_t") return false;
  const auto* event = static_cast<const xcb_generic_event_t*>(message);
  if ((event->response_type & 0x7f) != XCB_MAP_NOTIFY) return false;
  // The tray has mapped it; only now may Qt believe that it is visible, and draw it.
  if (reinterpret_cast<const xcb_map_notify_event_t*>(event)->window == id() && !isVisible())
    QMetaObject::invokeMethod(
        this, [this] { show(); }, Qt::QueuedConnection);
  return false;
}

QRect TrayWindow::findOnScreen() const {
  const auto corner = connection_.positionOnRoot(id());
  if (!corner) return {};
  return fromNativePixels(QRect(*corner, size() * devicePixelRatio()));
}

}  // namespace kestrivane

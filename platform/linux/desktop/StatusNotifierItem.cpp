#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/StatusNotifierItem.hpp"

#include <QCoreApplication>
#include <QCursor>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QGuiApplication>
#include <QImage>
#include <QPalette>
#include <QtEndian>
#include <utility>

namespace kestrivane {
namespace {

constexpr auto objectPath = "/StatusNotifierItem";

QString serviceName() {
  return QString("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
}

TrayPixmap pixmapOf(const StatusButton& button, int side) {
  QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  button.paint(painter, image.size(), QGuiApplication::palette().color(QPalette::WindowText));
  painter.end();
  const QImage plain = image.convertToFormat(QImage::Format_ARGB32);
  QByteArray pixels(plain.sizeInBytes(), Qt::Uninitialized);
  qToBigEndian<quint32>(plain.constBits(), plain.sizeInBytes() / 4, pixels.data());
  return {side, side, pixels};
}

}  // namespace

// Qt finds these by their names.
// NOLINTBEGIN(misc-use-internal-linkage)
QDBusArgument& operator<<(QDBusArgument& out, const TrayPixmap& pixmap) {
  out.beginStructure();
  out << pixmap.width << pixmap.height << pixmap.pixels;
  out.endStructure();
  return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, TrayPixmap& pixmap) {
  in.beginStructure();
  in >> pixmap.width >> pixmap.height >> pixmap.pixels;
  in.endStructure();
  return in;
}

QDBusArgument& operator<<(QDBusArgument& out, const TrayToolTip& tip) {
  out.beginStructure();
  out << tip.icon << tip.pixmaps << tip.title << tip.text;
  out.endStructure();
  return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, TrayToolTip& tip) {
  in.beginStructure();
  in >> tip.icon >> tip.pixmaps >> tip.title >> tip.text;
  in.endStructure();
  return in;
}
// NOLINTEND(misc-use-internal-linkage)

StatusNotifierItem::StatusNotifierItem(const QDBusConnection& bus, XConnection* connection,
                                       StatusButton& button, std::vector<BusMenu::Entry> menu)
    : bus_(bus),
      fence_(connection != nullptr ? std::make_unique<XEventFence>(*connection) : nullptr),
      button_(button),
      menu_(bus, afterClick(std::move(menu))) {
  qDBusRegisterMetaType<TrayPixmap>();
  qDBusRegisterMetaType<QList<TrayPixmap>>();
  qDBusRegisterMetaType<TrayToolTip>();
  button_.onChanged = [this] {
    emit NewIcon();
    emit NewToolTip();
  };
  button_.findAnchor = [this] { return anchor_; };
  bus_.registerObject(objectPath, this,
                      QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties |
                          QDBusConnection::ExportAllSignals);
  bus_.registerService(serviceName());
  QDBusMessage registration =
      QDBusMessage::createMethodCall("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                                     "org.kde.StatusNotifierWatcher", "RegisterStatusNotifierItem");
  registration << serviceName();
  bus_.call(registration, QDBus::NoBlock);
}

StatusNotifierItem::~StatusNotifierItem() {
  bus_.unregisterService(serviceName());
  bus_.unregisterObject(objectPath);
  button_.onChanged = nullptr;
  button_.findAnchor = nullptr;
}

QString StatusNotifierItem::identifier() const {
  return QGuiApplication::desktopFileName();
}

QString StatusNotifierItem::title() const {
  return QGuiApplication::applicationDisplayName();
}

QList<TrayPixmap> StatusNotifierItem::iconPixmap() const {
  return {pixmapOf(button_, 22), pixmapOf(button_, 44)};
}

TrayToolTip StatusNotifierItem::toolTip() const {
  const std::string& description = button_.image().accessibilityDescription;
  return {{}, {}, title(), QString::fromStdString(description)};
}

void StatusNotifierItem::Activate(int, int) {
  // Panels do not agree on what the position is that they hand over. On X11 the pointer, which has
  // just been pressed, is known; on Wayland the popover is placed by the compositor anyway.
  anchor_ = QGuiApplication::platformName() == "xcb" ? QRect(QCursor::pos(), QSize(1, 1)) : QRect();
  afterClick([this] { button_.click(); });
}

void StatusNotifierItem::SecondaryActivate(int x, int y) {
  Activate(x, y);
}

void StatusNotifierItem::ContextMenu(int x, int y) {
  Activate(x, y);
}

void StatusNotifierItem::Scroll(int, const QString&) {}

void StatusNotifierItem::afterClick(std::function<void()> action) {
  if (fence_) {
    fence_->afterEarlierEvents(std::move(action));
  } else {
    action();
  }
}

std::vector<BusMenu::Entry> StatusNotifierItem::afterClick(std::vector<BusMenu::Entry> menu) {
  for (BusMenu::Entry& entry : menu)
    entry.action = [this, action = std::move(entry.action)] { afterClick(action); };
  return menu;
}

}  // namespace kestrivane

#include "moc_StatusNotifierItem.cpp"

// The status item for panels that show items from the session bus: the D-Bus interface
// org.kde.StatusNotifierItem. It takes no drops; panels of this kind have none.
//
// Thread-safety: for the main thread. Ownership: the button and the X connection outlive it. It is
// shown for as long as it lives and a panel is there, one that comes back too.
#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>
#include <functional>
#include <memory>
#include <vector>

#include "platform/linux/desktop/BusMenu.hpp"
#include "platform/linux/desktop/StatusButton.hpp"
#include "platform/linux/desktop/XConnection.hpp"
#include "platform/linux/desktop/XEventFence.hpp"

namespace kestrivane {

/// (iiay) on the bus: ARGB, four bytes a pixel, the first byte is the opacity.
struct TrayPixmap {
  int width = 0;
  int height = 0;
  QByteArray pixels;
};

/// (sa(iiay)ss) on the bus.
struct TrayToolTip {
  QString icon;
  QList<TrayPixmap> pixmaps;
  QString title;
  QString text;
};

class StatusNotifierItem final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
  Q_PROPERTY(QString Category READ category CONSTANT)
  Q_PROPERTY(QString Id READ identifier CONSTANT)
  Q_PROPERTY(QString Title READ title CONSTANT)
  Q_PROPERTY(QString Status READ status CONSTANT)
  Q_PROPERTY(QString IconName READ iconName CONSTANT)
  Q_PROPERTY(QList<kestrivane::TrayPixmap> IconPixmap READ iconPixmap)
  Q_PROPERTY(QString AttentionIconName READ iconName CONSTANT)
  Q_PROPERTY(QString OverlayIconName READ iconName CONSTANT)
  Q_PROPERTY(kestrivane::TrayToolTip ToolTip READ toolTip)
  Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
  Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

 public:
  /// `connection` is null where there is no X server.
  StatusNotifierItem(const QDBusConnection& bus, XConnection* connection, StatusButton& button,
                     std::vector<BusMenu::Entry> menu);
  ~StatusNotifierItem() override;

  QString category() const { return "ApplicationStatus"; }
  QString identifier() const;
  QString title() const;
  QString status() const { return "Active"; }
  QString iconName() const { return {}; }
  QList<TrayPixmap> iconPixmap() const;
  TrayToolTip toolTip() const;
  bool itemIsMenu() const { return false; }
  QDBusObjectPath menu() const { return QDBusObjectPath(BusMenu::path); }

  // The names are the interface's.
 public slots:  // NOLINT(readability-redundant-access-specifiers)
  void Activate(int x, int y);
  void SecondaryActivate(int x, int y);
  void ContextMenu(int x, int y);
  void Scroll(int delta, const QString& orientation);

 signals:
  void NewIcon();
  void NewToolTip();

 private:
  /// Calls `action`, which a panel asks for because of a click, once the application knows of the
  /// click from the X server too.
  void afterClick(std::function<void()> action);
  std::vector<BusMenu::Entry> afterClick(std::vector<BusMenu::Entry> menu);

  QDBusConnection bus_;
  std::unique_ptr<XEventFence> fence_;  ///< on X11 only
  StatusButton& button_;
  BusMenu menu_;
  QRect anchor_;  ///< where the latest click was
};

}  // namespace kestrivane

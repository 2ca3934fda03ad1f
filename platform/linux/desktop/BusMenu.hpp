// A menu that a panel shows for a status item: the D-Bus interface com.canonical.dbusmenu, version
// 3, as far as a flat menu with fixed entries needs it.
//
// Thread-safety: for the main thread. Ownership: it is exported for as long as it lives.
#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QVariantMap>
#include <functional>
#include <string>
#include <vector>

namespace kestrivane {

/// (ia{sv}av) and (ia{sv}) and (isvu) on the bus.
struct MenuLayout {
  int id = 0;
  QVariantMap properties;
  QList<QDBusVariant> children;
};
struct MenuItemProperties {
  int id = 0;
  QVariantMap properties;
};
struct MenuEvent {
  int id = 0;
  QString name;
  QDBusVariant data;
  uint timestamp = 0;
};

class BusMenu final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
  Q_PROPERTY(uint Version READ version CONSTANT)
  Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
  Q_PROPERTY(QString Status READ status CONSTANT)
  Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

 public:
  struct Entry {
    std::function<std::string()> label;  ///< asked for each time, in the language of the moment
    std::function<void()> action;
  };

  static constexpr auto path = "/MenuBar";

  BusMenu(const QDBusConnection& bus, std::vector<Entry> entries);
  ~BusMenu() override;

  uint version() const { return 3; }
  QString textDirection() const { return "ltr"; }
  QString status() const { return "normal"; }
  QStringList iconThemePath() const { return {}; }

  // The names, and the order of arguments, are the interface's.
 public slots:  // NOLINT(readability-redundant-access-specifiers)
  uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                 kestrivane::MenuLayout& layout);
  QList<kestrivane::MenuItemProperties> GetGroupProperties(const QList<int>& ids,
                                                           const QStringList& propertyNames);
  QDBusVariant GetProperty(int id, const QString& name);
  void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
  QList<int> EventGroup(const QList<kestrivane::MenuEvent>& events);
  bool AboutToShow(int id);
  QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

 signals:
  void LayoutUpdated(uint revision, int parent);

 private:
  QVariantMap propertiesOf(int id) const;
  const Entry* entry(int id) const;

  QDBusConnection bus_;
  std::vector<Entry> entries_;  ///< the identifiers count from 1; 0 is the menu
};

}  // namespace kestrivane

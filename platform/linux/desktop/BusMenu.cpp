#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/BusMenu.hpp"

#include <QDBusMetaType>
#include <utility>

namespace kestrivane {

// Qt finds these by their names.
// NOLINTBEGIN(misc-use-internal-linkage)
QDBusArgument& operator<<(QDBusArgument& out, const MenuLayout& layout) {
  out.beginStructure();
  out << layout.id << layout.properties;
  out.beginArray(QMetaType::fromType<QDBusVariant>());
  for (const QDBusVariant& child : layout.children)
    out << child;
  out.endArray();
  out.endStructure();
  return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, MenuLayout& layout) {
  in.beginStructure();
  in >> layout.id >> layout.properties >> layout.children;
  in.endStructure();
  return in;
}

QDBusArgument& operator<<(QDBusArgument& out, const MenuItemProperties& item) {
  out.beginStructure();
  out << item.id << item.properties;
  out.endStructure();
  return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, MenuItemProperties& item) {
  in.beginStructure();
  in >> item.id >> item.properties;
  in.endStructure();
  return in;
}

QDBusArgument& operator<<(QDBusArgument& out, const MenuEvent& event) {
  out.beginStructure();
  out << event.id << event.name << event.data << event.timestamp;
  out.endStructure();
  return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, MenuEvent& event) {
  in.beginStructure();
  in >> event.id >> event.name >> event.data >> event.timestamp;
  in.endStructure();
  return in;
}
// NOLINTEND(misc-use-internal-linkage)

BusMenu::BusMenu(const QDBusConnection& bus, std::vector<Entry> entries)
    : bus_(bus), entries_(std::move(entries)) {
  qDBusRegisterMetaType<MenuLayout>();
  qDBusRegisterMetaType<MenuItemProperties>();
  qDBusRegisterMetaType<QList<MenuItemProperties>>();
  qDBusRegisterMetaType<MenuEvent>();
  qDBusRegisterMetaType<QList<MenuEvent>>();
  qDBusRegisterMetaType<QList<int>>();
  bus_.registerObject(path, this,
                      QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties |
                          QDBusConnection::ExportAllSignals);
}

BusMenu::~BusMenu() {
  bus_.unregisterObject(path);
}

uint BusMenu::GetLayout(int parentId, int recursionDepth, const QStringList&, MenuLayout& layout) {
  layout.id = parentId;
  layout.properties = propertiesOf(parentId);
  if (parentId == 0 && recursionDepth != 0) {
    for (int id = 1; entry(id) != nullptr; ++id) {
      const MenuLayout child{id, propertiesOf(id), {}};
      layout.children.append(QDBusVariant(QVariant::fromValue(child)));
    }
  }
  return 1;
}

QList<MenuItemProperties> BusMenu::GetGroupProperties(const QList<int>& ids, const QStringList&) {
  QList<MenuItemProperties> items;
  for (const int id : ids)
    items.append({id, propertiesOf(id)});
  return items;
}

QDBusVariant BusMenu::GetProperty(int id, const QString& name) {
  return QDBusVariant(propertiesOf(id).value(name, QString()));
}

void BusMenu::Event(int id, const QString& eventId, const QDBusVariant&, uint) {
  const Entry* chosen = entry(id);
  if (chosen != nullptr && eventId == "clicked") chosen->action();
}

QList<int> BusMenu::EventGroup(const QList<MenuEvent>& events) {
  QList<int> unknown;
  for (const MenuEvent& event : events) {
    if (event.id != 0 && entry(event.id) == nullptr) unknown.append(event.id);
    Event(event.id, event.name, event.data, event.timestamp);
  }
  return unknown;
}

bool BusMenu::AboutToShow(int) {
  emit LayoutUpdated(1, 0);  // the language may have changed
  return true;
}

QList<int> BusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>&) {
  return ids;
}

QVariantMap BusMenu::propertiesOf(int id) const {
  if (id == 0) return {{"children-display", "submenu"}};
  const Entry* known = entry(id);
  if (known == nullptr) return {};
  return {{"label", QString::fromStdString(known->label())}, {"enabled", true}, {"visible", true}};
}

const BusMenu::Entry* BusMenu::entry(int id) const {
  if (id < 1 || id > static_cast<int>(entries_.size())) return nullptr;
  return &entries_[static_cast<std::size_t>(id - 1)];
}

}  // namespace kestrivane

#include "moc_BusMenu.cpp"

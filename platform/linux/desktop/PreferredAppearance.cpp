#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/PreferredAppearance.hpp"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

namespace kestrivane {
namespace {

constexpr auto service = "org.freedesktop.portal.Desktop";
constexpr auto path = "/org/freedesktop/portal/desktop";
constexpr auto interface = "org.freedesktop.portal.Settings";
constexpr auto appearanceGroup = "org.freedesktop.appearance";
constexpr auto colorScheme = "color-scheme";

PreferredAppearance::Value appearanceOf(uint scheme) {
  switch (scheme) {
    case 1:
      return Appearance::dark;
    case 2:
      return Appearance::light;
    default:  // no preference, and numbers without a meaning
      return std::nullopt;
  }
}

}  // namespace

PreferredAppearance::PreferredAppearance(const QDBusConnection& bus,
                                         std::function<void(Value)> onChanged)
    : bus_(bus),
      onChanged_(std::move(onChanged)),
      portal_(service, bus, QDBusServiceWatcher::WatchForRegistration) {
  connect(&portal_, &QDBusServiceWatcher::serviceRegistered, this, [this] { ask(); });
  qRegisterMetaType<QDBusVariant>();  // a slot's arguments are found by the names of their types
  bus_.connect(service, path, interface, "SettingChanged", this,
               SLOT(settingChanged(QString, QString, QDBusVariant)));
  ask();
}

void PreferredAppearance::ask() {
  QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, "Read");
  question << appearanceGroup << colorScheme;
  auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
    answer->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *answer;
    if (reply.isValid()) take(reply.value().variant());
  });
}

void PreferredAppearance::settingChanged(const QString& group, const QString& key,
                                         const QDBusVariant& value) {
  if (group == appearanceGroup && key == colorScheme) take(value.variant());
}

void PreferredAppearance::take(const QVariant& setting) {
  // `Read` wraps the value once more than the signal does.
  const bool isWrapped = setting.canConvert<QDBusVariant>();
  const Value taken =
      appearanceOf((isWrapped ? setting.value<QDBusVariant>().variant() : setting).toUInt());
  if (std::exchange(value_, taken) != taken) onChanged_(taken);
}

}  // namespace kestrivane

#include "moc_PreferredAppearance.cpp"

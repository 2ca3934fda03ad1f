#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/StatusNotifierHost.hpp"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <utility>

namespace kestrivane {
namespace {

constexpr auto service = "org.kde.StatusNotifierWatcher";
constexpr auto path = "/StatusNotifierWatcher";
constexpr auto interface = "org.kde.StatusNotifierWatcher";

}  // namespace

StatusNotifierHost::StatusNotifierHost(const QDBusConnection& bus, std::function<void()> onChanged)
    : bus_(bus), onChanged_(std::move(onChanged)), watcher_(service, bus) {
  connect(&watcher_, &QDBusServiceWatcher::serviceRegistered, this, [this] { ask(); });
  connect(&watcher_, &QDBusServiceWatcher::serviceUnregistered, this,
          [this] { setPresent(false); });
  for (const char* change : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
    bus_.connect(service, path, interface, change, this, SLOT(ask()));
  ask();
}

void StatusNotifierHost::ask() {
  QDBusMessage question =
      QDBusMessage::createMethodCall(service, path, "org.freedesktop.DBus.Properties", "Get");
  question << interface << "IsStatusNotifierHostRegistered";
  question.setAutoStartService(false);
  auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
    answer->deleteLater();
    const QDBusPendingReply<QVariant> reply = *answer;
    setPresent(reply.isValid() && reply.value().toBool());
  });
}

void StatusNotifierHost::setPresent(bool isPresent) {
  if (std::exchange(isPresent_, isPresent) != isPresent) onChanged_();
}

}  // namespace kestrivane

#include "moc_StatusNotifierHost.cpp"

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/DesktopUpdatePrompt.hpp"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QUrl>
#include <QVariantMap>
#include <utility>

#include "platform/UUID.hpp"
#include "platform/qt/DroppedFiles.hpp"

namespace kestrivane {
namespace {

constexpr auto service = "org.freedesktop.Notifications";
constexpr auto path = "/org/freedesktop/Notifications";
/// The only action: an action "default", of a click on the notification itself, is one more button
/// in some services. Who does not want what is offered closes the notification.
constexpr auto action = "accept";

}  // namespace

DesktopUpdatePrompt::DesktopUpdatePrompt(const QDBusConnection& bus,
                                         NotificationCenter& notificationCenter)
    : bus_(bus), notificationCenter_(notificationCenter) {
  bus_.connect(service, path, service, "ActionInvoked", this, SLOT(actionInvoked(uint, QString)));
  bus_.connect(service, path, service, "NotificationClosed", this,
               SLOT(notificationClosed(uint, uint)));
}

void DesktopUpdatePrompt::tell(std::string text) {
  notificationCenter_.add({.identifier = makeUUIDString(),
                           .title = "Kestrivane",
                           .body = std::move(text),
                           .sound = NotificationSound::none},
                          [](const std::exception_ptr&) {});
}

void DesktopUpdatePrompt::offer(std::string text, std::string label, std::function<void()> accept) {
  QDBusMessage call = QDBusMessage::createMethodCall(service, path, service, "Notify");
  constexpr uint replacesNothing = 0;
  constexpr int expiresByDefault = -1;
  const QStringList actions = {action, QString::fromStdString(label)};
  const QVariantMap hints = {{"desktop-entry", QGuiApplication::desktopFileName()}};
  call << QGuiApplication::applicationDisplayName() << replacesNothing
       << QGuiApplication::desktopFileName() << QString("Kestrivane")
       << QString::fromStdString(text).toHtmlEscaped() << actions << hints << expiresByDefault;
  auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this,
          [this, answer, accept = std::move(accept)] {
            answer->deleteLater();
            const QDBusPendingReply<uint> id = *answer;
            if (id.isValid()) offers_[id.value()] = accept;
          });
}

void DesktopUpdatePrompt::open(const FileURL& archive) {
  QDesktopServices::openUrl(QUrl::fromEncoded(addressOf(archive)));
}

void DesktopUpdatePrompt::actionInvoked(uint id, const QString&) {
  const auto offer = offers_.extract(id);
  if (!offer.empty()) offer.mapped()();
}

void DesktopUpdatePrompt::notificationClosed(uint id, uint) {
  offers_.erase(id);
}

}  // namespace kestrivane

#include "moc_DesktopUpdatePrompt.cpp"

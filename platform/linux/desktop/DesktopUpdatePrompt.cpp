#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/DesktopUpdatePrompt.hpp"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>
#include <utility>

#include "platform/qt/DroppedFiles.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

constexpr auto service = "org.freedesktop.Notifications";
constexpr auto path = "/org/freedesktop/Notifications";
/// The only action: an action "default", of a click on the notification itself, is one more button
/// in some services. Who does not want what is offered closes the notification.
constexpr auto action = "accept";
constexpr auto title = "Kestrivane";
constexpr auto dialogueProgram = "kestrivane-ask";

}  // namespace

DesktopUpdatePrompt::DesktopUpdatePrompt(const QDBusConnection& bus, const Bundle& bundle)
    : bus_(bus), bundle_(bundle) {
  bus_.connect(service, path, service, "ActionInvoked", this, SLOT(actionInvoked(uint, QString)));
  bus_.connect(service, path, service, "NotificationClosed", this,
               SLOT(notificationClosed(uint, uint)));
}

void DesktopUpdatePrompt::tell(std::string text) {
  show({QString::fromStdString(text), {}, {}});
}

void DesktopUpdatePrompt::offer(std::string text, std::string button,
                                std::function<void()> accept) {
  show({QString::fromStdString(text), QString::fromStdString(button), std::move(accept)});
}

void DesktopUpdatePrompt::show(const Message& message) {
  const auto question = QDBusMessage::createMethodCall(service, path, service, "GetCapabilities");
  auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, message] {
    answer->deleteLater();
    const QDBusPendingReply<QStringList> capabilities = *answer;
    const bool isShownThere = capabilities.isValid() && (message.button.isEmpty() ||
                                                         capabilities.value().contains("actions"));
    if (isShownThere) {
      notify(message, capabilities.value().contains("body-markup"));
    } else {
      showDialogue(message);
    }
  });
}

void DesktopUpdatePrompt::notify(const Message& message, bool isMarkup) {
  QDBusMessage call = QDBusMessage::createMethodCall(service, path, service, "Notify");
  constexpr uint replacesNothing = 0;
  constexpr int expiresByDefault = -1;
  const QStringList actions =
      message.button.isEmpty() ? QStringList() : QStringList{action, message.button};
  const QVariantMap hints = {{"desktop-entry", QGuiApplication::desktopFileName()}};
  call << QGuiApplication::applicationDisplayName() << replacesNothing
       << QGuiApplication::desktopFileName() << QString(title)
       << (isMarkup ? message.text.toHtmlEscaped() : message.text) << actions << hints
       << expiresByDefault;
  auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, message] {
    answer->deleteLater();
    const QDBusPendingReply<uint> id = *answer;
    if (!id.isValid()) {
      showDialogue(message);
    } else if (message.accept) {
      offers_[id.value()] = message.accept;
    }
  });
}

void DesktopUpdatePrompt::showDialogue(const Message& message) {
  const auto executable = bundle_.auxiliaryExecutable(dialogueProgram);
  if (!executable) return;
  QStringList arguments = {message.text};
  if (!message.button.isEmpty()) {
    arguments << message.button << QString::fromStdString(L10n::choose("Later", "Позже"));
  }
  auto* dialogue = new QProcess(this);
  dialogue->setProcessChannelMode(QProcess::ForwardedChannels);
  connect(dialogue, &QProcess::errorOccurred, dialogue, &QObject::deleteLater);
  connect(dialogue, &QProcess::finished, this,
          [dialogue, accept = message.accept](int exitCode, QProcess::ExitStatus status) {
            dialogue->deleteLater();
            if (status == QProcess::NormalExit && exitCode == 0 && accept) accept();
          });
  dialogue->start(QFile::decodeName(QByteArray::fromStdString(executable->path())), arguments);
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

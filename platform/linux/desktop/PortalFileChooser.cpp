#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/PortalFileChooser.hpp"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QUuid>

#include "platform/qt/DroppedFiles.hpp"

namespace kestrivane {
namespace {

constexpr auto service = "org.freedesktop.portal.Desktop";
constexpr auto path = "/org/freedesktop/portal/desktop";
constexpr auto chooser = "org.freedesktop.portal.FileChooser";
constexpr auto request = "org.freedesktop.portal.Request";

/// Where the portal says the outcome, by its documentation: known before it is asked, so that no
/// answer is missed.
QString requestPath(const QDBusConnection& bus, const QString& token) {
  const QString sender = bus.baseService().mid(1).replace('.', '_');
  return QString(path) + "/request/" + sender + '/' + token;
}

}  // namespace

std::optional<OpenPanelResult> PortalFileChooser::choose(
    const OpenPanelConfiguration& configuration) {
  if (!bus_.isConnected()) return std::nullopt;
  const QString token = "kestrivane" + QUuid::createUuid().toString(QUuid::Id128);
  bus_.connect(service, requestPath(bus_, token), request, "Response", this,
               SLOT(responded(uint, QVariantMap)));

  QVariantMap options = {{"handle_token", token},
                         {"directory", configuration.canChooseDirectories},
                         {"multiple", configuration.allowsMultipleSelection}};
  if (!configuration.prompt.empty())
    options["accept_label"] = QString::fromStdString(configuration.prompt);
  QDBusMessage call = QDBusMessage::createMethodCall(service, path, chooser, "OpenFile");
  // No parent window; the prompt serves as the title, which a dialogue must have here.
  call << QString() << QString::fromStdString(configuration.prompt) << options;

  bool isRefused = false;
  QDBusPendingCallWatcher answer(bus_.asyncCall(call));
  connect(&answer, &QDBusPendingCallWatcher::finished, this, [&] {
    isRefused = answer.isError();
    if (isRefused) loop_.quit();
  });
  QDBusServiceWatcher life(service, bus_, QDBusServiceWatcher::WatchForUnregistration);
  connect(&life, &QDBusServiceWatcher::serviceUnregistered, &loop_, &QEventLoop::quit);
  connect(qApp, &QCoreApplication::aboutToQuit, &loop_, &QEventLoop::quit);
  loop_.exec();
  if (isRefused) return std::nullopt;
  return result_;
}

void PortalFileChooser::responded(uint response, const QVariantMap& results) {
  constexpr uint success = 0;
  if (response == success) {
    result_.response = ModalResponse::ok;
    for (const QString& address : results["uris"].toStringList())
      if (auto url = fileAtAddress(address.toLatin1())) result_.urls.push_back(*std::move(url));
  }
  loop_.quit();
}

}  // namespace kestrivane

#include "moc_PortalFileChooser.cpp"

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/SingleInstance.hpp"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <utility>

#include "platform/qt/DroppedFiles.hpp"

namespace kestrivane {
namespace {

constexpr auto service = "com.kestrivane.Kestrivane";
constexpr auto path = "/com/kestrivane/Kestrivane";  // the name with slashes, as the standard says
constexpr auto interface = "org.freedesktop.Application";

}  // namespace

SingleInstance::SingleInstance(const QDBusConnection& bus, Handlers handlers)
    : bus_(bus), handlers_(std::move(handlers)) {
  if (!bus_.isConnected()) return;
  // First the object, then the name: whoever finds the name finds the object too.
  bus_.registerObject(path, this, QDBusConnection::ExportAllSlots);
  const auto outcome =
      bus_.interface()->registerService(service, QDBusConnectionInterface::DontQueueService,
                                        QDBusConnectionInterface::DontAllowReplacement);
  isFirst_ = outcome.value() != QDBusConnectionInterface::ServiceNotRegistered;
}

SingleInstance::~SingleInstance() {
  bus_.unregisterObject(path);
  if (isFirst_) bus_.unregisterService(service);
}

bool SingleInstance::handOver(std::span<const FileURL> folders) {
  QStringList addresses;
  for (const FileURL& folder : folders)
    addresses.append(QString::fromLatin1(addressOf(folder)));
  QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface,
                                                     addresses.isEmpty() ? "Activate" : "Open");
  if (!addresses.isEmpty()) call << addresses;
  call << QVariantMap();
  return bus_.call(call).type() == QDBusMessage::ReplyMessage;
}

void SingleInstance::Activate(const QVariantMap&) {
  handlers_.activate();
}

void SingleInstance::Open(const QStringList& addresses, const QVariantMap&) {
  std::vector<FileURL> folders;
  for (const QString& address : addresses)
    if (auto folder = fileAtAddress(address.toLatin1())) folders.push_back(*std::move(folder));
  handlers_.open(std::move(folders));
}

void SingleInstance::ActivateAction(const QString& name, const QVariantList&, const QVariantMap&) {
  if (name == "quit") handlers_.quit();
}

}  // namespace kestrivane

#include "moc_SingleInstance.cpp"

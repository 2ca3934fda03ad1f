#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/DesktopOpenPanel.hpp"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QProcess>

#include "platform/linux/desktop/PortalFileChooser.hpp"

namespace kestrivane {
namespace {

constexpr auto program = "kestrivane-choose-folders";

}  // namespace

OpenPanelResult DesktopOpenPanel::runModal(const OpenPanelConfiguration& configuration) {
  if (isOpen_) return {};
  isOpen_ = true;
  PortalFileChooser portal(bus_);
  auto result = portal.choose(configuration);
  if (!result) result = runProgram(configuration);
  isOpen_ = false;
  return *std::move(result);
}

OpenPanelResult DesktopOpenPanel::runProgram(const OpenPanelConfiguration& configuration) const {
  const auto executable = bundle_.auxiliaryExecutable(program);
  if (!executable) return {};
  QProcess chooser;
  chooser.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  QEventLoop loop;
  const auto endLoop = [&loop] { loop.quit(); };
  QObject::connect(&chooser, &QProcess::finished, &loop, endLoop);
  QObject::connect(&chooser, &QProcess::errorOccurred, &loop, endLoop);
  QObject::connect(qApp, &QCoreApplication::aboutToQuit, &loop, endLoop);
  chooser.start(QFile::decodeName(QByteArray::fromStdString(executable->path())),
                {QString::fromStdString(configuration.prompt),
                 configuration.allowsMultipleSelection ? "several" : "one"});
  loop.exec();
  if (chooser.state() != QProcess::NotRunning) {  // this program is ending
    chooser.kill();
    chooser.waitForFinished();
  }
  if (chooser.exitStatus() != QProcess::NormalExit || chooser.exitCode() != 0) return {};

  OpenPanelResult result{.response = ModalResponse::ok, .urls = {}};
  for (const QByteArray& path : chooser.readAllStandardOutput().split('\0'))
    if (!path.isEmpty()) result.urls.emplace_back(path.toStdString());
  return result;
}

}  // namespace kestrivane

// One dialogue of the desktop portal: the interface org.freedesktop.portal.FileChooser.
//
// Thread-safety: for the main thread; Qt's event loop runs while the dialogue is open.
#pragma once

#include <QDBusConnection>
#include <QEventLoop>
#include <QObject>
#include <QVariantMap>
#include <optional>

#include "platform/OpenPanel.hpp"

namespace kestrivane {

class PortalFileChooser final : public QObject {
  Q_OBJECT

 public:
  explicit PortalFileChooser(const QDBusConnection& bus) : bus_(bus) {}

  /// What the user has chosen; nothing where no portal answers. Called once.
  std::optional<OpenPanelResult> choose(const OpenPanelConfiguration& configuration);

 private slots:
  void responded(uint response, const QVariantMap& results);

 private:
  QDBusConnection bus_;
  QEventLoop loop_;
  OpenPanelResult result_;
};

}  // namespace kestrivane

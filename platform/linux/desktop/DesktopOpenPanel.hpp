// The desktop's dialogue for choosing folders: the one of the desktop portal
// (org.freedesktop.portal.FileChooser), and a program of our own where no portal answers, so that
// this one does without the widgets that it takes.
//
// Thread-safety: for the main thread; Qt's event loop runs while the dialogue is open. Ownership:
// the bundle outlives it.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>
#include <optional>

#include "platform/Bundle.hpp"
#include "platform/OpenPanel.hpp"

namespace kestrivane {

class DesktopOpenPanel final : public OpenPanel {
 public:
  DesktopOpenPanel(const QDBusConnection& bus, const Bundle& bundle) : bus_(bus), bundle_(bundle) {}

  /// Folders are all that can be chosen. While a dialogue is open another one is cancelled at once.
  OpenPanelResult runModal(const OpenPanelConfiguration& configuration) override;

 private:
  OpenPanelResult runProgram(const OpenPanelConfiguration& configuration) const;

  QDBusConnection bus_;
  const Bundle& bundle_;
  bool isOpen_ = false;
};

}  // namespace kestrivane

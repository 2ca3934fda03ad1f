#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/LinuxStatusBar.hpp"

#include <QEvent>
#include <QGuiApplication>
#include <QTimer>
#include <chrono>

#include "platform/linux/desktop/StatusNotifierHost.hpp"
#include "platform/linux/desktop/StatusNotifierItem.hpp"
#include "platform/linux/desktop/SystemTray.hpp"
#include "platform/linux/desktop/TrayWindow.hpp"

namespace kestrivane {
namespace {

using namespace std::chrono_literals;

/// When a session starts, the panel may come after the programs.
constexpr auto patience = 4s;

class LinuxStatusItem final : public QObject, public StatusItem {
 public:
  LinuxStatusItem(XConnection* connection, const LinuxStatusBar::Configuration& configuration)
      : connection_(connection),
        menu_(configuration.menu),
        button_(configuration.isClickSpent),
        host_(QDBusConnection::sessionBus(), [this] { settle(); }) {
    if (connection_ != nullptr) {
      tray_ = std::make_unique<SystemTray>(*connection_, [this] { trayChanged(); });
    }
    waiting_.setSingleShot(true);
    waiting_.callOnTimeout([this, onUnseen = configuration.onUnseen] {
      if (!isSeen()) onUnseen();
    });
    waiting_.start(patience);
    qApp->installEventFilter(this);
    settle();
  }

  StatusBarButton* button() override { return &button_; }

 private:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::ApplicationPaletteChange && button_.onChanged) button_.onChanged();
    return false;
  }

  bool isSeen() const { return window_ != nullptr || notifier_ != nullptr; }

  void trayChanged() {
    window_.reset();  // another tray, if there is one, gets another window
    settle();
  }

  /// One place at a time, the tray first, because only a window in it takes drops.
  void settle() {
    if (tray_ && tray_->isPresent()) {
      notifier_.reset();
      if (!window_) window_ = std::make_unique<TrayWindow>(*connection_, *tray_, button_);
    } else if (!host_.isPresent()) {
      notifier_.reset();
    } else if (!notifier_) {
      notifier_ = std::make_unique<StatusNotifierItem>(QDBusConnection::sessionBus(), connection_,
                                                       button_, menu_);
    }
  }

  XConnection* connection_;
  std::vector<BusMenu::Entry> menu_;
  StatusButton button_;
  QTimer waiting_;
  StatusNotifierHost host_;
  std::unique_ptr<SystemTray> tray_;
  std::unique_ptr<TrayWindow> window_;
  std::unique_ptr<StatusNotifierItem> notifier_;
};

}  // namespace

std::unique_ptr<StatusItem> LinuxStatusBar::makeStatusItem() {
  return std::make_unique<LinuxStatusItem>(connection_, configuration_);
}

}  // namespace kestrivane

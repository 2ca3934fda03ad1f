// The status bar of whatever desktop there is: the X11 tray where there is one, else a panel that
// shows items from the session bus. The item follows them as they appear, die and come back.
//
// Thread-safety: for the main thread. Ownership: the X connection outlives the bar and its items.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/StatusBar.hpp"
#include "platform/linux/desktop/BusMenu.hpp"
#include "platform/linux/desktop/XConnection.hpp"

namespace kestrivane {

class LinuxStatusBar final : public StatusBar {
 public:
  struct Configuration {
    /// For panels that show only menus.
    std::vector<BusMenu::Entry> menu;
    /// Whether the click that is handled now has done its work already and does nothing more.
    std::function<bool()> isClickSpent;
    /// Called when an item has found no bar to stand in, some seconds after it was made.
    std::function<void()> onUnseen;
  };

  /// `connection` is null where there is no X server.
  LinuxStatusBar(XConnection* connection, Configuration configuration)
      : connection_(connection), configuration_(std::move(configuration)) {}

  std::unique_ptr<StatusItem> makeStatusItem() override;

 private:
  XConnection* connection_;
  Configuration configuration_;
};

}  // namespace kestrivane

// The program's presence in the status bar: one item that shows whether a conversion is running,
// takes dropped folders, and opens the popover.
//
// Thread-safety: for the main thread. Ownership: owns the view model together with whoever made it,
// the status item and the subscription, so that nothing calls back once it is gone. What is handed
// in by reference outlives it.
#pragma once

#include <memory>

#include "platform/Application.hpp"
#include "platform/NotificationCenter.hpp"
#include "platform/Popover.hpp"
#include "platform/StatusBar.hpp"
#include "platform/Updater.hpp"
#include "state/AppViewModel.hpp"

namespace kestrivane {

class AppDelegate {
 public:
  struct Services {
    Application& application;
    NotificationCenter& notificationCenter;
    Popover& popover;  ///< shows the view model and the updater
    StatusBar& statusBar;
    Updater& updater;
  };

  /// Starts the updater.
  AppDelegate(const Services& services, std::shared_ptr<AppViewModel> viewModel);
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;
  ~AppDelegate() = default;

  /// The launch: permission to notify, the popover, the status item and what it does.
  void applicationDidFinishLaunching();

  /// Opens or closes the popover. Nothing happens before the launch, or without a button.
  void togglePopover();
  /// As `togglePopover`, if the popover is closed.
  void openPopover();

  /// Shows the busy symbol, dimmed, or the program's own icon.
  void updateStatusIcon(bool isProcessing);

 private:
  void addDragView(StatusBarButton& button);
  StatusBarButton* button() const;

  Services services_;
  std::shared_ptr<AppViewModel> viewModel_;
  std::unique_ptr<StatusItem> statusItem_;
  Subscription processing_;
};

}  // namespace kestrivane

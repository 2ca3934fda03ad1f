// The popover: a window without a frame beside the icon.
//
// On X11 the window manager is passed by, so that it can stand beside its icon; it closes when a
// pointer button is pressed and released outside of it, unless what was dragged has ended inside.
// On Wayland the compositor places it, and it closes when it loses the keyboard. Thread-safety: for
// the main thread. Ownership: the X connection and what the window shows outlive it. The window is
// made when it is first shown, since it takes memory.
#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWindow>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/Popover.hpp"
#include "platform/linux/desktop/OutsidePresses.hpp"
#include "platform/linux/desktop/XConnection.hpp"

namespace kestrivane {

class LinuxPopover final : public QObject, public Popover {
 public:
  struct Configuration {
    /// Makes a window that fills itself with its content, and leaves the Escape key to the popover.
    /// Throws `PlatformError`.
    std::function<std::unique_ptr<QWindow>()> makeWindow;
    /// Called with the reason when the popover was to be shown and there can be no window.
    std::function<void(std::string reason)> onFailure;
  };

  /// `connection` is null where there is no X server.
  LinuxPopover(XConnection* connection, Configuration configuration);
  LinuxPopover(const LinuxPopover&) = delete;
  LinuxPopover& operator=(const LinuxPopover&) = delete;
  ~LinuxPopover() override;

  void setContentSize(PopoverSize size) override { size_ = size; }
  void setBehavior(PopoverBehavior behavior) override { behavior_ = behavior; }
  bool isShown() const override;
  /// `button` is one of this system's status bar.
  void showRelativeTo(StatusBarButton& button) override;
  void makeKey() override;
  void performClose() override;

  /// Whether the click that is handled now has already closed the popover, and so is not to open it
  /// again. Asking forgets it.
  bool takeClosingClick();

 private:
  /// Whether there is a window.
  bool makeWindow();
  /// Of the window.
  bool eventFilter(QObject* object, QEvent* event) override;
  void pressedSomewhere();
  void watchPress();
  /// Whether the pointer is inside of the window.
  bool isOver(const std::optional<XConnection::Pointer>& pointer) const;
  void lostKeyboard();

  XConnection* connection_;
  Configuration configuration_;
  PopoverSize size_{};
  PopoverBehavior behavior_ = PopoverBehavior::applicationDefined;

  std::unique_ptr<OutsidePresses> presses_;  ///< on X11 only
  QTimer release_;                           ///< looks for the end of a press outside
  QElapsedTimer sinceClosingClick_;          ///< valid if the latest click has closed it
  bool wantsKeyboard_ = false;               ///< as soon as the server shows the window
  xcb_window_t formerFocus_ = XCB_WINDOW_NONE;

  std::unique_ptr<QWindow> window_;
};

}  // namespace kestrivane

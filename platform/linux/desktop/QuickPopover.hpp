// The popover: a window without a frame that shows one Qt Quick item.
//
// On X11 the window manager is passed by, so that it can stand beside its icon; it closes when a
// pointer button is pressed and released outside of it, unless what was dragged has ended inside.
// On Wayland the compositor places it, and it closes when it loses the keyboard. Thread-safety: for
// the main thread. Ownership: the X connection and what the content refers to outlive it. The
// engine and the window are made when it is first shown, since they take memory.
#pragma once

#include <QElapsedTimer>
#include <QQmlEngine>
#include <QTimer>
#include <chrono>
#include <functional>
#include <memory>

#include "platform/Popover.hpp"
#include "platform/linux/desktop/OutsidePresses.hpp"
#include "platform/linux/desktop/XConnection.hpp"

class QQuickItem;

namespace kestrivane {

class PopoverWindow;

class QuickPopover final : public QObject, public Popover {
 public:
  /// Makes what is shown, of the size that it is given; null (and a line in the log) on failure.
  using ContentFactory = std::function<std::unique_ptr<QQuickItem>(QQmlEngine& engine)>;

  /// `connection` is null where there is no X server.
  QuickPopover(XConnection* connection, ContentFactory makeContent);
  QuickPopover(const QuickPopover&) = delete;
  QuickPopover& operator=(const QuickPopover&) = delete;
  ~QuickPopover() override;

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
  void makeWindow();
  void pressedSomewhere();
  void watchPress();
  /// Whether the pointer is inside of the window.
  bool isOver(const std::optional<XConnection::Pointer>& pointer) const;
  void lostKeyboard();

  XConnection* connection_;
  ContentFactory makeContent_;
  PopoverSize size_{};
  PopoverBehavior behavior_ = PopoverBehavior::applicationDefined;

  std::unique_ptr<OutsidePresses> presses_;  ///< on X11 only
  QTimer release_;                           ///< looks for the end of a press outside
  bool isClosedByLatestPress_ = false;
  QElapsedTimer sinceKeyboardLoss_;  ///< on Wayland only
  xcb_window_t formerFocus_ = XCB_WINDOW_NONE;

  std::unique_ptr<QQmlEngine> engine_;
  std::unique_ptr<QQuickItem> content_;
  std::unique_ptr<PopoverWindow> window_;  ///< goes before what it shows
};

}  // namespace kestrivane

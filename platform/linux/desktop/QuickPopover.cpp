#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/QuickPopover.hpp"

#include <QGuiApplication>
#include <QPalette>
#include <QQuickItem>
#include <QScreen>
#include <utility>

#include "platform/linux/desktop/PopoverPlacement.hpp"
#include "platform/linux/desktop/PopoverWindow.hpp"
#include "platform/linux/desktop/ScreenCoordinates.hpp"
#include "platform/linux/desktop/StatusButton.hpp"

namespace kestrivane {
namespace {

using namespace std::chrono_literals;

/// How often the end of a press outside is looked for, as long as it lasts.
constexpr auto releaseInterval = 20ms;
/// On Wayland: a click on the icon that comes so soon after the keyboard was lost is the one that
/// took it.
constexpr auto sameClick = 300ms;

}  // namespace

QuickPopover::QuickPopover(XConnection* connection, ContentFactory makeContent)
    : connection_(connection), makeContent_(std::move(makeContent)) {
  if (connection_ != nullptr) {
    presses_ = std::make_unique<OutsidePresses>(*connection_, [this] { pressedSomewhere(); });
  }
  release_.setInterval(releaseInterval);
  release_.callOnTimeout(this, [this] { watchPress(); });
}

QuickPopover::~QuickPopover() = default;

bool QuickPopover::isShown() const {
  return window_ && window_->isVisible();
}

void QuickPopover::showRelativeTo(StatusBarButton& button) {
  if (!window_) makeWindow();
  const QRect anchor = static_cast<StatusButton&>(button).anchor();
  const QScreen* screen = anchor.isEmpty() ? nullptr : QGuiApplication::screenAt(anchor.center());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();

  const QSize size(static_cast<int>(size_.width), static_cast<int>(size_.height));
  content_->setSize(size);
  window_->setColor(QGuiApplication::palette().color(QPalette::Window));
  window_->setGeometry(QRect(placePopover(anchor, screen->availableGeometry(), size), size));
  window_->show();
  if (presses_ && behavior_ == PopoverBehavior::transient) presses_->listen();
}

void QuickPopover::makeKey() {
  if (!isShown()) return;
  if (connection_ == nullptr) {
    window_->requestActivate();
  } else if (window_->isExposed()) {
    // The server refuses to focus a window that it does not show yet.
    if (formerFocus_ == XCB_WINDOW_NONE) formerFocus_ = connection_->focus();
    connection_->setFocus(static_cast<xcb_window_t>(window_->winId()));
  } else {
    window_->onExposed = [this] {
      window_->onExposed = nullptr;
      makeKey();
    };
  }
}

void QuickPopover::performClose() {
  if (!isShown()) return;
  const xcb_window_t formerFocus = std::exchange(formerFocus_, XCB_WINDOW_NONE);
  // Whoever had the keyboard gets it back, unless the user has given it to another one.
  if (formerFocus != XCB_WINDOW_NONE &&
      connection_->focus() == static_cast<xcb_window_t>(window_->winId())) {
    connection_->setFocus(formerFocus);
  }
  window_->hide();
  release_.stop();
}

bool QuickPopover::takeClosingClick() {
  if (sinceKeyboardLoss_.isValid() && !sinceKeyboardLoss_.hasExpired(sameClick.count()))
    return true;
  return std::exchange(isClosedByLatestPress_, false);
}

void QuickPopover::makeWindow() {
  engine_ = std::make_unique<QQmlEngine>();
  content_ = makeContent_(*engine_);
  window_ = std::make_unique<PopoverWindow>();
  Qt::WindowFlags flags = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
  if (connection_ != nullptr) flags |= Qt::BypassWindowManagerHint;
  window_->setFlags(flags);
  window_->setTitle(QGuiApplication::applicationDisplayName());
  window_->onEscape = [this] { performClose(); };
  if (connection_ == nullptr) window_->onKeyboardLost = [this] { lostKeyboard(); };
  content_->setParentItem(window_->contentItem());
  content_->forceActiveFocus();
}

void QuickPopover::pressedSomewhere() {
  isClosedByLatestPress_ = false;
  if (!isShown()) {
    presses_->ignore();
    return;
  }
  // Not yet: the press may begin a drag that ends in the popover.
  const auto pointer = connection_->pointer();
  if (!isOver(pointer)) release_.start();
}

void QuickPopover::watchPress() {
  const auto pointer = connection_->pointer();
  if (pointer && pointer->isPressed) return;
  release_.stop();
  if (isOver(pointer)) return;
  performClose();
  isClosedByLatestPress_ = true;
}

bool QuickPopover::isOver(const std::optional<XConnection::Pointer>& pointer) const {
  return pointer && window_->geometry().contains(fromNativePixels(pointer->position));
}

void QuickPopover::lostKeyboard() {
  if (behavior_ != PopoverBehavior::transient || !isShown()) return;
  performClose();
  sinceKeyboardLoss_.start();
}

}  // namespace kestrivane

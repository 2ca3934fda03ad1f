#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/LinuxPopover.hpp"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainterPath>
#include <QRegion>
#include <QScreen>
#include <utility>

#include "platform/PlatformError.hpp"
#include "platform/linux/desktop/PopoverPlacement.hpp"
#include "platform/linux/desktop/ScreenCoordinates.hpp"
#include "platform/linux/desktop/StatusButton.hpp"

namespace kestrivane {
namespace {

using namespace std::chrono_literals;

/// How often the end of a press outside is looked for, as long as it lasts.
constexpr auto releaseInterval = 20ms;
/// A click on the icon of which the panel tells so soon after the popover was closed is the one
/// that closed it. Anything later is meant to open it again: another click, a key, a call on the
/// bus.
constexpr std::chrono::milliseconds sameClick = 1s;
/// On Wayland the popover is closed by the press, whatever the keyboard was lost to.
constexpr std::chrono::milliseconds sameClickOnWayland = 300ms;

constexpr double cornerRadius = 10;

/// Without a compositor there is no transparency, and round corners have to be cut.
QRegion roundedMask(QSize size) {
  QPainterPath shape;
  shape.addRoundedRect(QRectF(QPointF(0, 0), size), cornerRadius, cornerRadius);
  return QRegion(shape.toFillPolygon().toPolygon());
}

}  // namespace

LinuxPopover::LinuxPopover(XConnection* connection, Configuration configuration)
    : connection_(connection), configuration_(std::move(configuration)) {
  if (connection_ != nullptr) {
    presses_ = std::make_unique<OutsidePresses>(*connection_, [this] { pressedSomewhere(); });
  }
  release_.setInterval(releaseInterval);
  release_.callOnTimeout(this, [this] { watchPress(); });
}

LinuxPopover::~LinuxPopover() = default;

bool LinuxPopover::isShown() const {
  return window_ && window_->isVisible();
}

void LinuxPopover::showRelativeTo(StatusBarButton& button) {
  if (!window_ && !makeWindow()) return;
  const QRect anchor = static_cast<StatusButton&>(button).anchor();
  const QScreen* screen = anchor.isEmpty() ? nullptr : QGuiApplication::screenAt(anchor.center());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();

  const QSize size(static_cast<int>(size_.width), static_cast<int>(size_.height));
  window_->setGeometry(QRect(placePopover(anchor, screen->availableGeometry(), size), size));
  window_->setMask(roundedMask(size));
  window_->show();
  if (presses_ && behavior_ == PopoverBehavior::transient) presses_->listen();
}

void LinuxPopover::makeKey() {
  if (!isShown()) return;
  if (connection_ == nullptr) {
    window_->requestActivate();
    return;
  }
  // The server refuses to focus a window that it does not show yet.
  wantsKeyboard_ = !window_->isExposed();
  if (wantsKeyboard_) return;
  if (formerFocus_ == XCB_WINDOW_NONE) formerFocus_ = connection_->focus();
  connection_->setFocus(static_cast<xcb_window_t>(window_->winId()));
}

void LinuxPopover::performClose() {
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

bool LinuxPopover::takeClosingClick() {
  const auto limit = connection_ != nullptr ? sameClick : sameClickOnWayland;
  const bool isClosing =
      sinceClosingClick_.isValid() && !sinceClosingClick_.hasExpired(limit.count());
  sinceClosingClick_.invalidate();
  return isClosing;
}

bool LinuxPopover::makeWindow() {
  try {
    window_ = configuration_.makeWindow();
  } catch (const PlatformError& error) {
    configuration_.onFailure(error.localizedDescription());
    return false;
  }
  Qt::WindowFlags flags = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
  if (connection_ != nullptr) flags |= Qt::BypassWindowManagerHint;
  window_->setFlags(flags);
  window_->setTitle(QGuiApplication::applicationDisplayName());
  window_->installEventFilter(this);
  return true;
}

bool LinuxPopover::eventFilter(QObject*, QEvent* event) {
  switch (event->type()) {
    case QEvent::Expose:
      if (wantsKeyboard_) makeKey();
      return false;
    case QEvent::KeyPress:
      if (static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape) return false;
      performClose();
      return true;
    case QEvent::FocusOut:
      if (connection_ == nullptr) lostKeyboard();
      return false;
    default:
      return false;
  }
}

void LinuxPopover::pressedSomewhere() {
  sinceClosingClick_.invalidate();
  if (!isShown()) {
    presses_->ignore();
    return;
  }
  // Not yet: the press may begin a drag that ends in the popover.
  const auto pointer = connection_->pointer();
  if (!isOver(pointer)) release_.start();
}

void LinuxPopover::watchPress() {
  const auto pointer = connection_->pointer();
  if (pointer && pointer->isPressed) return;
  release_.stop();
  if (isOver(pointer)) return;
  performClose();
  sinceClosingClick_.start();
}

bool LinuxPopover::isOver(const std::optional<XConnection::Pointer>& pointer) const {
  return pointer && window_->geometry().contains(fromNativePixels(pointer->position));
}

void LinuxPopover::lostKeyboard() {
  if (behavior_ != PopoverBehavior::transient || !isShown()) return;
  performClose();
  sinceClosingClick_.start();
}

}  // namespace kestrivane

// The status item in the X11 tray: a window of our own that the tray takes in, and that takes drops
// as no other kind of tray icon does.
//
// Thread-safety: for the main thread. Ownership: the connection, the tray and the button outlive
// it. It docks itself when it is made; when its tray is gone it is of no more use.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QRasterWindow>

#include "platform/linux/desktop/StatusButton.hpp"
#include "platform/linux/desktop/SystemTray.hpp"
#include "platform/linux/desktop/XConnection.hpp"

namespace kestrivane {

class TrayWindow final : public QRasterWindow, private QAbstractNativeEventFilter {
 public:
  TrayWindow(XConnection& connection, SystemTray& tray, StatusButton& button);
  TrayWindow(const TrayWindow&) = delete;
  TrayWindow& operator=(const TrayWindow&) = delete;
  ~TrayWindow() override;

 private:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

  xcb_window_t id() const { return static_cast<xcb_window_t>(winId()); }
  /// Where it is on the screen. The tray is its parent, which Qt does not know.
  QRect findOnScreen() const;

  XConnection& connection_;
  SystemTray& tray_;
  StatusButton& button_;
  bool hasAlpha_;
  bool isTakingDrag_ = false;  ///< the one that is over it or was last
};

}  // namespace kestrivane

// The X11 system tray: who runs it, and docking a window in it (the freedesktop.org System Tray
// Protocol, over XEmbed).
//
// Thread-safety: for the main thread. Ownership: the connection outlives it.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QColor>
#include <QObject>
#include <functional>
#include <optional>

#include "platform/linux/desktop/XConnection.hpp"

namespace kestrivane {

class SystemTray final : public QObject, public QAbstractNativeEventFilter {
 public:
  /// `onChanged` is called when a tray has appeared or is gone, never inside the handling of
  /// an event.
  SystemTray(XConnection& connection, std::function<void()> onChanged);
  SystemTray(const SystemTray&) = delete;
  SystemTray& operator=(const SystemTray&) = delete;
  ~SystemTray() override;

  /// Is there a tray now?
  bool isPresent() const { return owner_ != XCB_WINDOW_NONE; }
  /// Whether icons are to be windows with an alpha channel.
  bool wantsAlpha();
  /// The colour that icons are to have; nothing when the tray does not say.
  std::optional<QColor> foreground();
  /// Asks the tray to take the window in. The tray maps it when it has.
  void dock(xcb_window_t window);

 private:
  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
  void findOwner();

  XConnection& connection_;
  std::function<void()> onChanged_;
  xcb_atom_t selection_;
  xcb_window_t owner_ = XCB_WINDOW_NONE;
};

}  // namespace kestrivane

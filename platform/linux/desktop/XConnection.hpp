// The X server that the application talks to, as far as Qt does not cover it: atoms, properties,
// client messages, the pointer and the keyboard focus. Positions are in the server's own pixels.
//
// Thread-safety: for the main thread. Ownership: the connection is Qt's; the application object
// outlives this one. What the server refuses is treated as if it had not been asked.
#pragma once

#include <QImage>
#include <QPoint>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include <xcb/xcb.h>

namespace kestrivane {

struct XReplyDeleter {
  void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using XReply = std::unique_ptr<Reply, XReplyDeleter>;

class XConnection {
 public:
  /// Null when the application does not run on X11.
  static std::unique_ptr<XConnection> ofApplication();

  xcb_connection_t* get() const { return connection_; }
  xcb_window_t root() const { return root_; }
  int screenNumber() const { return screenNumber_; }
  xcb_atom_t atom(const std::string& name);

  /// The window that owns the selection; 0 when none does.
  xcb_window_t selectionOwner(xcb_atom_t selection) const;
  /// As `selectionOwner`, and from now on the window's end and changes are told as events.
  xcb_window_t watchSelectionOwner(xcb_atom_t selection) const;

  void setProperty(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                   std::span<const std::uint32_t> values) const;
  /// The numbers of the property, `count` at most; none when there is no such property.
  std::vector<std::uint32_t> numbers(xcb_window_t window, xcb_atom_t property,
                                     std::uint32_t count) const;
  void sendMessage(xcb_window_t window, xcb_atom_t type,
                   const std::array<std::uint32_t, 5>& data) const;
  /// A window that is never shown and gets only what is sent to it; the caller destroys it.
  xcb_window_t makeMessageWindow() const;
  void destroyWindow(xcb_window_t window) const;
  /// Bits per pixel of the visual; 0 when there is no such visual.
  int depthOfVisual(xcb_visualid_t visual) const;

  /// Where the window's upper left corner is on the root window.
  std::optional<QPoint> positionOnRoot(xcb_window_t window) const;
  /// What the parent shows behind the window; null where that cannot be known.
  QImage backgroundBehind(xcb_window_t window) const;

  struct Pointer {
    QPoint position;  ///< on the root window
    bool isPressed;   ///< any of the first three buttons
  };
  std::optional<Pointer> pointer() const;

  xcb_window_t focus() const;
  void setFocus(xcb_window_t window) const;

 private:
  XConnection(xcb_connection_t* connection, int screenNumber, const xcb_screen_t& screen)
      : connection_(connection), screenNumber_(screenNumber), root_(screen.root), screen_(screen) {}

  xcb_connection_t* connection_;
  int screenNumber_;
  xcb_window_t root_;
  const xcb_screen_t& screen_;
  std::unordered_map<std::string, xcb_atom_t> atoms_;
};

}  // namespace kestrivane

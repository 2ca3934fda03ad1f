#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/SystemTray.hpp"

#include <QCoreApplication>
#include <utility>

namespace kestrivane {

SystemTray::SystemTray(XConnection& connection, std::function<void()> onChanged)
    : connection_(connection),
      onChanged_(std::move(onChanged)),
      selection_(
          connection.atom("_NET_SYSTEM_TRAY_S" + std::to_string(connection.screenNumber()))) {
  QCoreApplication::instance()->installNativeEventFilter(this);
  owner_ = connection_.watchSelectionOwner(selection_);
}

SystemTray::~SystemTray() {
  QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool SystemTray::wantsAlpha() {
  const auto visual = connection_.numbers(owner_, connection_.atom("_NET_SYSTEM_TRAY_VISUAL"), 1);
  return !visual.empty() && connection_.depthOfVisual(visual[0]) == 32;
}

std::optional<QColor> SystemTray::foreground() {
  // Red, green and blue of the text, 16 bits each, stand before other colours.
  const auto colours = connection_.numbers(owner_, connection_.atom("_NET_SYSTEM_TRAY_COLORS"), 3);
  if (colours.size() < 3) return std::nullopt;
  const auto channel = [&](std::size_t i) { return static_cast<int>(colours[i] >> 8); };
  return QColor(channel(0), channel(1), channel(2));
}

void SystemTray::dock(xcb_window_t window) {
  constexpr std::uint32_t protocolVersion = 0;
  constexpr std::uint32_t isToBeMapped = 1;
  const std::array<std::uint32_t, 2> embedding = {protocolVersion, isToBeMapped};
  const xcb_atom_t embeddingInfo = connection_.atom("_XEMBED_INFO");
  connection_.setProperty(window, embeddingInfo, embeddingInfo, embedding);

  // Some sources of drags look for a window with this property below the pointer.
  const std::array<std::uint32_t, 2> normalState = {1, XCB_WINDOW_NONE};
  const xcb_atom_t state = connection_.atom("WM_STATE");
  connection_.setProperty(window, state, state, normalState);

  constexpr std::uint32_t requestDock = 0;
  connection_.sendMessage(owner_, connection_.atom("_NET_SYSTEM_TRAY_OPCODE"),
                          {XCB_CURRENT_TIME, requestDock, window, 0, 0});
}

bool SystemTray::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (eventType != "xcb_generic_event_t") return false;
  const auto* event = static_cast<const xcb_generic_event_t*>(message);
  switch (event->response_type & 0x7f) {
    case XCB_CLIENT_MESSAGE: {
      const auto* client = reinterpret_cast<const xcb_client_message_event_t*>(event);
      if (client->type == connection_.atom("MANAGER") && client->data.data32[1] == selection_)
        findOwner();
      break;
    }
    case XCB_DESTROY_NOTIFY: {
      const auto* destroyed = reinterpret_cast<const xcb_destroy_notify_event_t*>(event);
      if (isPresent() && destroyed->window == owner_) findOwner();
      break;
    }
    default:
      break;
  }
  return false;
}

void SystemTray::findOwner() {
  owner_ = connection_.watchSelectionOwner(selection_);
  QMetaObject::invokeMethod(
      this, [this] { onChanged_(); }, Qt::QueuedConnection);
}

}  // namespace kestrivane

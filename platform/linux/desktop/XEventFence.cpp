#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/XEventFence.hpp"

#include <QCoreApplication>
#include <utility>

namespace kestrivane {

XEventFence::XEventFence(XConnection& connection)
    : connection_(connection), window_(connection.makeMessageWindow()) {
  QCoreApplication::instance()->installNativeEventFilter(this);
}

XEventFence::~XEventFence() {
  QCoreApplication::instance()->removeNativeEventFilter(this);
  connection_.destroyWindow(window_);
}

void XEventFence::afterEarlierEvents(std::function<void()> action) {
  waiting_.push(std::move(action));
  // The server sends it behind all that it has sent before.
  connection_.sendMessage(window_, connection_.atom("KESTRIVANE_FENCE"), {});
}

bool XEventFence::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (eventType != "xcb_generic_event_t" || waiting_.empty()) return false;
  const auto* event = static_cast<const xcb_generic_event_t*>(message);
  if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE) return false;
  const auto* client = reinterpret_cast<const xcb_client_message_event_t*>(event);
  if (client->window != window_) return false;
  QMetaObject::invokeMethod(this, std::move(waiting_.front()), Qt::QueuedConnection);
  waiting_.pop();
  return true;
}

}  // namespace kestrivane

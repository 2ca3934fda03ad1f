// Puts what another connection tells in order with the X events: a panel's message about a click
// may arrive before the press of the button itself does.
//
// Thread-safety: for the main thread. Ownership: the connection outlives it; what waits when it
// ends is forgotten.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <functional>
#include <queue>

#include "platform/linux/desktop/XConnection.hpp"

namespace kestrivane {

class XEventFence final : public QObject, private QAbstractNativeEventFilter {
 public:
  explicit XEventFence(XConnection& connection);
  XEventFence(const XEventFence&) = delete;
  XEventFence& operator=(const XEventFence&) = delete;
  ~XEventFence() override;

  /// Calls `action` later, once the application has handled every event that the server had for it
  /// before this call.
  void afterEarlierEvents(std::function<void()> action);

 private:
  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

  XConnection& connection_;
  xcb_window_t window_;  ///< never shown; gets the messages to ourselves
  std::queue<std::function<void()>> waiting_;
};

}  // namespace kestrivane

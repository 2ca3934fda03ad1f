#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/OutsidePresses.hpp"

#include <QCoreApplication>
#include <utility>

#include <xcb/xinput.h>

namespace kestrivane {
namespace {

constexpr std::uint32_t firstScrollButton = 4;
constexpr std::uint32_t lastScrollButton = 7;

}  // namespace

OutsidePresses::OutsidePresses(XConnection& connection, std::function<void()> onPress)
    : connection_(connection), onPress_(std::move(onPress)) {
  const auto* extension = xcb_get_extension_data(connection_.get(), &xcb_input_id);
  if (extension == nullptr || !extension->present) return;
  // Only clients of 2.1 or later see raw events while another one has grabbed the pointer.
  const XReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
      connection_.get(), xcb_input_xi_query_version(connection_.get(), 2, 2), nullptr));
  if (!version) return;
  extension_ = extension->major_opcode;
  QCoreApplication::instance()->installNativeEventFilter(this);
}

OutsidePresses::~OutsidePresses() {
  ignore();
  QCoreApplication::instance()->removeNativeEventFilter(this);
}

void OutsidePresses::listen() {
  if (!std::exchange(isListening_, true)) select(XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS);
}

void OutsidePresses::ignore() {
  if (std::exchange(isListening_, false)) select(0);
}

bool OutsidePresses::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (eventType != "xcb_generic_event_t") return false;
  const auto* event = static_cast<const xcb_ge_generic_event_t*>(message);
  if ((event->response_type & 0x7f) != XCB_GE_GENERIC || event->extension != extension_ ||
      event->event_type != XCB_INPUT_RAW_BUTTON_PRESS) {
    return false;
  }
  const auto button = reinterpret_cast<const xcb_input_raw_button_press_event_t*>(event)->detail;
  const bool isScrolling = button >= firstScrollButton && button <= lastScrollButton;
  if (isListening_ && !isScrolling) onPress_();
  return false;
}

void OutsidePresses::select(std::uint32_t events) {
  if (extension_ == 0) return;
  struct {
    xcb_input_event_mask_t head;
    std::uint32_t mask;
  } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, events};
  xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &selection.head);
  xcb_flush(connection_.get());
}

}  // namespace kestrivane

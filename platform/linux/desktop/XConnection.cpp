#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/XConnection.hpp"

#include <QGuiApplication>
#include <utility>

namespace kestrivane {
namespace {

const xcb_screen_t* screenOf(xcb_connection_t* connection, int number) {
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; screens.rem > 0; --number, xcb_screen_next(&screens))
    if (number == 0) return screens.data;
  return nullptr;
}

/// Of the pixels of an image with this depth, as all servers in use have them.
QImage::Format formatOfDepth(int depth) {
  switch (depth) {
    case 15:
      return QImage::Format_RGB555;
    case 16:
      return QImage::Format_RGB16;
    case 24:
    case 32:
      return QImage::Format_RGB32;
    default:
      return QImage::Format_Invalid;
  }
}

}  // namespace

std::unique_ptr<XConnection> XConnection::ofApplication() {
  const auto* native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (native == nullptr || native->connection() == nullptr) return nullptr;
  int number = 0;
  char* host = nullptr;
  int display = 0;
  if (xcb_parse_display(nullptr, &host, &display, &number) != 0) std::free(host);
  const xcb_screen_t* screen = screenOf(native->connection(), number);
  if (screen == nullptr) return nullptr;
  return std::unique_ptr<XConnection>(new XConnection(native->connection(), number, *screen));
}

xcb_atom_t XConnection::atom(const std::string& name) {
  if (const auto known = atoms_.find(name); known != atoms_.end()) return known->second;
  const auto length = static_cast<std::uint16_t>(name.size());
  const XReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
      connection_, xcb_intern_atom(connection_, 0, length, name.data()), nullptr));
  const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t{};
  atoms_.emplace(name, atom);
  return atom;
}

xcb_window_t XConnection::selectionOwner(xcb_atom_t selection) const {
  const XReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
      connection_, xcb_get_selection_owner(connection_, selection), nullptr));
  return reply ? reply->owner : xcb_window_t{};
}

xcb_window_t XConnection::watchSelectionOwner(xcb_atom_t selection) const {
  // An owner that ended before it was watched would seem to live for ever. No grab of the server
  // prevents that: it lets clients go all the same.
  const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_window_t watched = XCB_WINDOW_NONE;
  xcb_window_t owner = selectionOwner(selection);
  while (owner != watched) {
    xcb_change_window_attributes(connection_, owner, XCB_CW_EVENT_MASK, &mask);
    watched = std::exchange(owner, selectionOwner(selection));
  }
  return owner;
}

void XConnection::setProperty(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                              std::span<const std::uint32_t> values) const {
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, type, 32,
                      static_cast<std::uint32_t>(values.size()), values.data());
}

std::vector<std::uint32_t> XConnection::numbers(xcb_window_t window, xcb_atom_t property,
                                                std::uint32_t count) const {
  const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
      connection_, xcb_get_property(connection_, 0, window, property, XCB_ATOM_ANY, 0, count),
      nullptr));
  if (!reply || reply->format != 32) return {};
  const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
  return {first, first + reply->value_len};
}

void XConnection::sendMessage(xcb_window_t window, xcb_atom_t type,
                              const std::array<std::uint32_t, 5>& data) const {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = type;
  std::copy(data.begin(), data.end(), event.data.data32);
  xcb_send_event(connection_, 0, window, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char*>(&event));
  xcb_flush(connection_);
}

xcb_window_t XConnection::makeMessageWindow() const {
  const xcb_window_t window = xcb_generate_id(connection_);
  xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, -1, -1, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  return window;
}

void XConnection::destroyWindow(xcb_window_t window) const {
  xcb_destroy_window(connection_, window);
  xcb_flush(connection_);
}

int XConnection::depthOfVisual(xcb_visualid_t visual) const {
  auto depths = xcb_screen_allowed_depths_iterator(&screen_);
  for (; depths.rem > 0; xcb_depth_next(&depths)) {
    auto visuals = xcb_depth_visuals_iterator(depths.data);
    for (; visuals.rem > 0; xcb_visualtype_next(&visuals))
      if (visuals.data->visual_id == visual) return depths.data->depth;
  }
  return 0;
}

std::optional<QPoint> XConnection::positionOnRoot(xcb_window_t window) const {
  const XReply<xcb_translate_coordinates_reply_t> reply(xcb_translate_coordinates_reply(
      connection_, xcb_translate_coordinates(connection_, window, root_, 0, 0), nullptr));
  if (!reply) return std::nullopt;
  return QPoint(reply->dst_x, reply->dst_y);
}

QImage XConnection::backgroundBehind(xcb_window_t window) const {
  const std::uint32_t parentRelative = XCB_BACK_PIXMAP_PARENT_RELATIVE;
  xcb_change_window_attributes(connection_, window, XCB_CW_BACK_PIXMAP, &parentRelative);
  const XReply<xcb_get_geometry_reply_t> size(
      xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), nullptr));
  if (!size) return {};
  xcb_clear_area(connection_, 0, window, 0, 0, 0, 0);
  const XReply<xcb_get_image_reply_t> image(
      xcb_get_image_reply(connection_,
                          xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0,
                                        size->width, size->height, UINT32_MAX),
                          nullptr));
  if (!image) return {};
  const QImage::Format format = formatOfDepth(image->depth);
  if (format == QImage::Format_Invalid) return {};
  // Lines are padded to whole words.
  const int bytesPerLine =
      (size->width * QImage::toPixelFormat(format).bitsPerPixel() + 31) / 32 * 4;
  if (xcb_get_image_data_length(image.get()) < bytesPerLine * size->height) return {};
  return QImage(xcb_get_image_data(image.get()), size->width, size->height, bytesPerLine, format)
      .copy()
      .convertToFormat(QImage::Format_RGB32);
}

std::optional<XConnection::Pointer> XConnection::pointer() const {
  const XReply<xcb_query_pointer_reply_t> reply(
      xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root_), nullptr));
  if (!reply) return std::nullopt;
  constexpr int buttons = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;
  return Pointer{QPoint(reply->root_x, reply->root_y), (reply->mask & buttons) != 0};
}

xcb_window_t XConnection::focus() const {
  const XReply<xcb_get_input_focus_reply_t> reply(
      xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
  return reply ? reply->focus : xcb_window_t{};
}

void XConnection::setFocus(xcb_window_t window) const {
  xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
  xcb_flush(connection_);
}

}  // namespace kestrivane

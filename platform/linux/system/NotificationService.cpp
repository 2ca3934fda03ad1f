#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/NotificationService.hpp"

#include <cerrno>
#include <chrono>
#include <utility>

#include "platform/PlatformError.hpp"
#include "platform/Unicode.hpp"

namespace kestrivane {
namespace {

using namespace std::chrono_literals;

constexpr const char* serviceName = "org.freedesktop.Notifications";
constexpr const char* serviceInterface = "org.freedesktop.Notifications";
constexpr const char* servicePath = "/org/freedesktop/Notifications";

/// The first call may have to start the service.
constexpr std::chrono::seconds patienceForStart = 25s;
/// A service that is slower has the notification all the same, and the next one may be sent.
constexpr std::chrono::seconds patienceForReply = 2s;

/// `text` as the bus takes it, on one line: file names may have line feeds and worse in them.
std::string singleLine(const std::string& text) {
  std::string line = validUTF8(text);
  for (char& c : line)
    if (const auto byte = static_cast<unsigned char>(c); byte < 0x20 || byte == 0x7F) c = ' ';
  return line;
}

std::string escapingMarkup(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

bool listsCapability(sd_bus_message* capabilities, std::string_view wanted) {
  checkedBus(sd_bus_message_enter_container(capabilities, 'a', "s"));
  const char* capability = nullptr;
  while (checkedBus(sd_bus_message_read_basic(capabilities, 's', &capability)) > 0)
    if (capability == wanted) return true;
  return false;
}

}  // namespace

void NotificationService::show(const NotificationRequest& request) {
  if (bus_) {
    try {
      return notify(request);
    } catch (const PlatformError&) {
      bus_.reset();  // the service or the bus may have been started anew meanwhile
    }
  }
  connect();
  notify(request);
}

void NotificationService::connect() {
  auto bus = SessionBus::open(abandonDescriptor_);
  const BusMessage capabilities =
      bus->send(bus->newMethodCall(serviceName, servicePath, serviceInterface, "GetCapabilities"),
                patienceForStart);
  if (!capabilities) throw PlatformError(ETIMEDOUT, "The notification service does not answer");
  speaksMarkup_ = listsCapability(capabilities.get(), "body-markup");
  // From here on calls go to this very process: what it is capable of is known.
  const char* const sender = sd_bus_message_get_sender(capabilities.get());
  owner_ = sender != nullptr ? sender : serviceName;
  bus_ = std::move(bus);
}

void NotificationService::notify(const NotificationRequest& request) {
  const std::string title = singleLine(request.title);
  std::string body = singleLine(request.body);
  if (speaksMarkup_) body = escapingMarkup(body);

  BusMessage call = bus_->newMethodCall(owner_, servicePath, serviceInterface, "Notify");
  const std::uint32_t replacesNone = 0;
  const std::int32_t defaultTimeout = -1;
  const std::uint8_t normalUrgency = 1;
  checkedBus(sd_bus_message_append(call.get(), "susssas", "Kestrivane", replacesNone, "",
                                   title.c_str(), body.c_str(), 0));
  checkedBus(sd_bus_message_open_container(call.get(), 'a', "{sv}"));
  checkedBus(sd_bus_message_append(call.get(), "{sv}", "urgency", "y", normalUrgency));
  if (request.sound == NotificationSound::standard) {
    checkedBus(sd_bus_message_append(call.get(), "{sv}", "sound-name", "s", "message-new-instant"));
  } else {
    checkedBus(sd_bus_message_append(call.get(), "{sv}", "suppress-sound", "b", 1));
  }
  checkedBus(sd_bus_message_close_container(call.get()));
  checkedBus(sd_bus_message_append(call.get(), "i", defaultTimeout));
  bus_->send(std::move(call), patienceForReply);
}

}  // namespace kestrivane

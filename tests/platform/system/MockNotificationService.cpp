#include "tests/platform/system/MockNotificationService.hpp"

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace kestrivane::test {
namespace {

constexpr const char* busName = "org.freedesktop.Notifications";
constexpr std::chrono::seconds patience(20);

void require(int result) {
  if (result < 0) throw std::runtime_error("sd-bus: " + std::to_string(result));
}

std::vector<std::string> readHints(sd_bus_message* call) {
  std::vector<std::string> hints;
  require(sd_bus_message_enter_container(call, 'a', "{sv}"));
  while (sd_bus_message_enter_container(call, 'e', "sv") > 0) {
    const char* key = nullptr;
    const char* contents = nullptr;
    require(sd_bus_message_read_basic(call, 's', &key));
    require(sd_bus_message_peek_type(call, nullptr, &contents));
    require(sd_bus_message_enter_container(call, 'v', contents));
    std::string hint = std::string(key) + "=";
    if (*contents == 's') {
      const char* value = nullptr;
      require(sd_bus_message_read_basic(call, 's', &value));
      hint += value;
    } else if (*contents == 'y') {
      std::uint8_t value = 0;
      require(sd_bus_message_read_basic(call, 'y', &value));
      hint += std::to_string(value);
    } else {
      int value = 0;
      require(sd_bus_message_read_basic(call, 'b', &value));
      hint += value != 0 ? "true" : "false";
    }
    require(sd_bus_message_exit_container(call));
    require(sd_bus_message_exit_container(call));
    hints.push_back(hint);
  }
  require(sd_bus_message_exit_container(call));
  return hints;
}

ShownNotification readNotification(sd_bus_message* call) {
  ShownNotification shown;
  const char* application = nullptr;
  const char* icon = nullptr;
  const char* title = nullptr;
  const char* body = nullptr;
  require(sd_bus_message_read(call, "susss", &application, &shown.replaces, &icon, &title, &body));
  shown.application = application;
  shown.title = title;
  shown.body = body;
  require(sd_bus_message_skip(call, "as"));
  shown.hints = readHints(call);
  require(sd_bus_message_read(call, "i", &shown.timeout));
  return shown;
}

}  // namespace

MockNotificationService::MockNotificationService(const std::string& address,
                                                 std::vector<std::string> capabilities,
                                                 Answers answers)
    : capabilities_(std::move(capabilities)), answers_(answers) {
  require(sd_bus_new(&bus_));
  require(sd_bus_set_address(bus_, address.c_str()));
  require(sd_bus_set_bus_client(bus_, 1));
  require(sd_bus_start(bus_));
  require(sd_bus_add_object(bus_, nullptr, "/org/freedesktop/Notifications", onCall, this));
  require(sd_bus_request_name(bus_, busName, 0));
  thread_ = std::thread([this] { serve(); });
}

MockNotificationService::~MockNotificationService() {
  stopping_ = true;
  thread_.join();
  sd_bus_close_unref(bus_);
}

std::vector<ShownNotification> MockNotificationService::waitForShown(std::size_t count) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, patience, [&] { return shown_.size() >= count; });
  return shown_;
}

bool MockNotificationService::waitForCall() {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, patience, [&] { return wasCalled_; });
}

int MockNotificationService::onCall(sd_bus_message* call, void* service, sd_bus_error*) {
  return static_cast<MockNotificationService*>(service)->handle(call);
}

int MockNotificationService::handle(sd_bus_message* call) {
  const std::lock_guard lock(mutex_);
  wasCalled_ = true;
  changed_.notify_all();
  if (answers_ == Answers::never) return 1;
  if (sd_bus_message_is_method_call(call, busName, "GetCapabilities") > 0) {
    sd_bus_message* reply = nullptr;
    require(sd_bus_message_new_method_return(call, &reply));
    require(sd_bus_message_open_container(reply, 'a', "s"));
    for (const std::string& capability : capabilities_)
      require(sd_bus_message_append(reply, "s", capability.c_str()));
    require(sd_bus_message_close_container(reply));
    const int result = sd_bus_send(nullptr, reply, nullptr);
    sd_bus_message_unref(reply);
    return result;
  }
  if (sd_bus_message_is_method_call(call, busName, "Notify") > 0) {
    shown_.push_back(readNotification(call));
    if (answers_ == Answers::neverToNotify) return 1;
    return sd_bus_reply_method_return(call, "u", static_cast<unsigned>(shown_.size()));
  }
  return 0;
}

void MockNotificationService::serve() {
  while (!stopping_) {
    const int processed = sd_bus_process(bus_, nullptr);
    if (processed < 0) return;                      // the bus is gone
    if (processed == 0) sd_bus_wait(bus_, 20'000);  // microseconds; then looks at `stopping_`
  }
}

}  // namespace kestrivane::test

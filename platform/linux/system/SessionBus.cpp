#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/SessionBus.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include <poll.h>

#include "platform/PlatformError.hpp"

namespace kestrivane {
namespace {

using Clock = std::chrono::steady_clock;

struct SlotDeleter {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};

int keepReply(sd_bus_message* message, void* reply, sd_bus_error*) {
  static_cast<BusMessage*>(reply)->reset(sd_bus_message_ref(message));
  return 0;
}

/// When the connection itself wants attention. sd-bus counts the monotonic clock in microseconds;
/// the largest number stands for never.
Clock::time_point attentionTime(sd_bus* bus) {
  std::uint64_t microseconds = 0;
  checkedBus(sd_bus_get_timeout(bus, &microseconds));
  if (microseconds == UINT64_MAX) return Clock::time_point::max();
  return Clock::time_point(std::chrono::microseconds(microseconds));
}

}  // namespace

int checkedBus(int result) {
  if (result < 0) throw PlatformError(-result, std::generic_category().message(-result));
  return result;
}

std::unique_ptr<SessionBus> SessionBus::open(int abandonDescriptor) {
  sd_bus* bus = nullptr;
  checkedBus(sd_bus_open_user(&bus));
  return std::unique_ptr<SessionBus>(new SessionBus(bus, abandonDescriptor));
}

BusMessage SessionBus::newMethodCall(const std::string& destination, const char* path,
                                     const char* interface, const char* member) {
  sd_bus_message* call = nullptr;
  checkedBus(sd_bus_message_new_method_call(bus_.get(), &call, destination.c_str(), path, interface,
                                            member));
  return BusMessage(call);
}

BusMessage SessionBus::send(BusMessage call, std::chrono::microseconds patience) {
  const Clock::time_point deadline = Clock::now() + patience;
  BusMessage reply;
  sd_bus_slot* slot = nullptr;
  checkedBus(sd_bus_call_async(bus_.get(), &slot, call.get(), keepReply, &reply, UINT64_MAX));
  const std::unique_ptr<sd_bus_slot, SlotDeleter> forgetsReply(slot);

  while (!reply) {
    if (checkedBus(sd_bus_process(bus_.get(), nullptr)) > 0) continue;
    if (Clock::now() >= deadline) return nullptr;
    waitForTraffic(deadline);
  }
  if (const sd_bus_error* error = sd_bus_message_get_error(reply.get()))
    throw PlatformError(sd_bus_error_get_errno(error),
                        error->message != nullptr ? error->message : error->name);
  return reply;
}

void SessionBus::waitForTraffic(Clock::time_point deadline) {
  std::array<pollfd, 2> descriptors{};
  descriptors[0].fd = checkedBus(sd_bus_get_fd(bus_.get()));
  descriptors[0].events = static_cast<short>(checkedBus(sd_bus_get_events(bus_.get())));
  descriptors[1].fd = abandonDescriptor_;
  descriptors[1].events = POLLIN;

  const auto end = std::min(deadline, attentionTime(bus_.get()));
  const auto wait = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
  if (poll(descriptors.data(), descriptors.size(), wait > 0 ? static_cast<int>(wait) : 0) < 0 &&
      errno != EINTR) {
    checkedBus(-errno);
  }
  if (descriptors[1].revents != 0) checkedBus(-ECANCELED);
}

}  // namespace kestrivane

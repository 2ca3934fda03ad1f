#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/FreedesktopNotificationCenter.hpp"

#include <chrono>
#include <cstddef>
#include <utility>

#include <pthread.h>
#include <sys/eventfd.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/SignalMask.hpp"
#include "platform/linux/system/NotificationService.hpp"
#include "platform/linux/system/SystemCall.hpp"

namespace kestrivane {
namespace {

constexpr std::size_t largestQueue = 256;
constexpr std::chrono::seconds flushTime(1);

}  // namespace

std::unique_ptr<FreedesktopNotificationCenter> FreedesktopNotificationCenter::create(
    UnifiedLog& log) {
  auto logger = log.makeLogger(logSubsystem, "FreedesktopNotificationCenter");
  FileDescriptor abandon(checked(eventfd(0, EFD_CLOEXEC)));
  std::unique_ptr<FreedesktopNotificationCenter> center(
      new FreedesktopNotificationCenter(std::move(logger), std::move(abandon)));
  const SignalMask mask;
  center->thread_ = std::thread([center = center.get()] { center->work(); });
  pthread_setname_np(center->thread_.native_handle(), "notifications");
  return center;
}

FreedesktopNotificationCenter::FreedesktopNotificationCenter(std::unique_ptr<Logger> logger,
                                                             FileDescriptor abandon)
    : logger_(std::move(logger)), abandon_(std::move(abandon)) {}

FreedesktopNotificationCenter::~FreedesktopNotificationCenter() {
  if (!thread_.joinable()) return;
  {
    std::unique_lock lock(mutex_);
    stopping_ = true;
    changed_.notify_all();
    if (!changed_.wait_for(lock, flushTime, [this] { return finished_; })) entries_.clear();
  }
  eventfd_write(abandon_.get(), 1);
  thread_.join();
}

void FreedesktopNotificationCenter::requestAuthorization(std::uint32_t,
                                                         AuthorizationHandler handler) {
  handler(true, nullptr);
}

void FreedesktopNotificationCenter::add(NotificationRequest request, AddHandler handler) {
  const std::lock_guard lock(mutex_);
  if (entries_.size() == largestQueue) entries_.pop_front();
  entries_.push_back({std::move(request), std::move(handler)});
  changed_.notify_all();
}

void FreedesktopNotificationCenter::work() {
  NotificationService service(abandon_.get());
  Entry entry;
  while (takeNext(entry)) {
    std::exception_ptr error;
    try {
      service.show(entry.request);
    } catch (const std::exception&) {
      error = std::current_exception();
    }
    finish(entry, error);
  }
  const std::lock_guard lock(mutex_);
  finished_ = true;
  changed_.notify_all();
}

bool FreedesktopNotificationCenter::takeNext(Entry& entry) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return stopping_ || !entries_.empty(); });
  if (entries_.empty()) return false;
  entry = std::move(entries_.front());
  entries_.pop_front();
  return true;
}

void FreedesktopNotificationCenter::finish(const Entry& entry, std::exception_ptr error) {
  if (error && !failureIsLogged_) {
    logger_->log(LogLevel::debug, "Уведомление не показано: " + localizedDescription(error));
  }
  failureIsLogged_ = error != nullptr;
  if (entry.handler) entry.handler(std::move(error));
}

}  // namespace kestrivane

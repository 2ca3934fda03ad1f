#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/SerialQueue.hpp"

#include <utility>

#include <pthread.h>

namespace kestrivane {
namespace {

/// The kernel keeps 15 bytes of a thread's name. Labels differ at their end.
std::string_view threadName(std::string_view label) {
  return label.size() > 15 ? label.substr(label.size() - 15) : label;
}

}  // namespace

SerialQueue::SerialQueue(std::shared_ptr<Executor> pool, std::string_view label)
    : pool_(std::move(pool)), label_(threadName(label)) {}

void SerialQueue::post(Job job) {
  {
    const std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
    if (std::exchange(scheduled_, true)) return;
  }
  schedule();
}

void SerialQueue::schedule() {
  pool_->post([self = shared_from_this()] { self->runNext(); });
}

// One job a turn, so that a busy queue does not keep the others waiting.
void SerialQueue::runNext() {
  pthread_setname_np(pthread_self(), label_.c_str());
  Job job;
  {
    const std::lock_guard lock(mutex_);
    job = std::move(jobs_.front());
    jobs_.pop_front();
  }
  job();
  job = nullptr;  // what the job owns is released before the next one runs
  {
    const std::lock_guard lock(mutex_);
    scheduled_ = !jobs_.empty();
    if (!scheduled_) return;
  }
  schedule();
}

}  // namespace kestrivane

#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/DispatchQueue.hpp"

#include <utility>

#include <dispatch/dispatch.h>

#include "platform/macos/DispatchGroup.hpp"

namespace kestrivane {

DispatchQueue::DispatchQueue(dispatch_queue_s* queue, std::shared_ptr<DispatchGroup> group)
    : queue_(queue), group_(std::move(group)) {}

DispatchQueue::~DispatchQueue() {
  dispatch_release(queue_);
}

void DispatchQueue::post(Job job) {
  group_->post(queue_, token_, std::move(job));
}

}  // namespace kestrivane

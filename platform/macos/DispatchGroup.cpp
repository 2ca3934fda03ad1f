#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/DispatchGroup.hpp"

#include <utility>

#include <dispatch/dispatch.h>

namespace kestrivane {
namespace {

/// What libdispatch carries for one job.
struct PostedJob {
  std::weak_ptr<const bool> executor;
  Executor::Job job;

  static void run(void* context) {
    const std::unique_ptr<PostedJob> posted(static_cast<PostedJob*>(context));
    if (!posted->executor.expired()) posted->job();
  }
};

}  // namespace

DispatchGroup::DispatchGroup() : group_(dispatch_group_create()) {}

DispatchGroup::~DispatchGroup() {
  dispatch_release(group_);
}

void DispatchGroup::post(dispatch_queue_s* queue, std::weak_ptr<const bool> executor,
                         Executor::Job job) {
  const std::lock_guard lock(mutex_);
  if (finished_) return;
  dispatch_group_async_f(group_, queue, new PostedJob{std::move(executor), std::move(job)},
                         PostedJob::run);
}

void DispatchGroup::finish() {
  std::unique_lock lock(mutex_);
  while (dispatch_group_wait(group_, DISPATCH_TIME_NOW) != 0) {
    lock.unlock();  // the jobs may post
    dispatch_group_wait(group_, DISPATCH_TIME_FOREVER);
    lock.lock();
  }
  finished_ = true;
}

}  // namespace kestrivane

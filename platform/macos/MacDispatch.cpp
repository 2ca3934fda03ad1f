#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacDispatch.hpp"

#include <string>
#include <utility>

#include <dispatch/dispatch.h>

namespace kestrivane {
namespace {

qos_class_t classOf(QualityOfService qualityOfService) {
  return qualityOfService == QualityOfService::background ? QOS_CLASS_BACKGROUND
                                                          : QOS_CLASS_USER_INITIATED;
}

/// The result is owned by the caller.
dispatch_queue_t createSerialQueue(const std::string& label, QualityOfService qualityOfService) {
  const dispatch_queue_attr_t attributes =
      dispatch_queue_attr_make_with_qos_class(DISPATCH_QUEUE_SERIAL, classOf(qualityOfService), 0);
  return dispatch_queue_create(label.c_str(), attributes);
}

/// Global queues are never released by the system; it ignores the release by the executor.
dispatch_queue_t getGlobalQueue(QualityOfService qualityOfService) {
  return dispatch_get_global_queue(classOf(qualityOfService), 0);
}

}  // namespace

MacDispatch::MacDispatch(EventLoop& mainLoop)
    : mainLoop_(mainLoop),
      background_(getGlobalQueue(QualityOfService::background), group_),
      userInitiated_(getGlobalQueue(QualityOfService::userInitiated), group_),
      longWork_(group_) {}

MacDispatch::~MacDispatch() {
  group_->finish();
}

Executor& MacDispatch::globalQueue(QualityOfService qualityOfService) {
  return qualityOfService == QualityOfService::background ? background_ : userInitiated_;
}

std::shared_ptr<Executor> MacDispatch::makeSerialQueue(std::string_view label,
                                                       QualityOfService qualityOfService) {
  return std::make_shared<DispatchQueue>(createSerialQueue(std::string(label), qualityOfService),
                                         group_);
}

void MacDispatch::LongWorkQueue::post(Job job) {
  const dispatch_queue_t queue = createSerialQueue("long work", QualityOfService::userInitiated);
  group_->post(queue, token_, std::move(job));
  dispatch_release(queue);  // the job keeps it until it has run
}

}  // namespace kestrivane

// The queues of libdispatch, which keeps the threads.
//
// Thread-safety: every operation may be called from any thread. Ownership: the main loop outlives
// it. Serial queues may outlive it; what is posted to them then is dropped. Every serial queue is a
// `DispatchQueue`, whose handle the file-event service delivers to.
#pragma once

#include <memory>

#include "platform/Dispatch.hpp"
#include "platform/macos/DispatchGroup.hpp"
#include "platform/macos/DispatchQueue.hpp"

namespace kestrivane {

class MacDispatch final : public Dispatch {
 public:
  explicit MacDispatch(EventLoop& mainLoop);
  /// Runs what is queued. Not to be called from a job.
  ~MacDispatch() override;

  EventLoop& mainLoop() override { return mainLoop_; }
  Executor& globalQueue(QualityOfService qualityOfService) override;
  Executor& longWorkQueue() override { return longWork_; }
  std::shared_ptr<Executor> makeSerialQueue(std::string_view label,
                                            QualityOfService qualityOfService) override;

 private:
  /// A serial queue for each job: libdispatch gives every one of them a thread, also while all
  /// threads of its concurrent queues wait.
  class LongWorkQueue final : public Executor {
   public:
    explicit LongWorkQueue(std::shared_ptr<DispatchGroup> group) : group_(std::move(group)) {}
    void post(Job job) override;

   private:
    const std::shared_ptr<DispatchGroup> group_;
    const std::shared_ptr<const bool> token_ = std::make_shared<const bool>(true);
  };

  EventLoop& mainLoop_;
  const std::shared_ptr<DispatchGroup> group_ = std::make_shared<DispatchGroup>();
  DispatchQueue background_;
  DispatchQueue userInitiated_;
  LongWorkQueue longWork_;
};

}  // namespace kestrivane

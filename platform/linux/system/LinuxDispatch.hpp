// The threads of the program on Linux: one pool for heavy work, a thread for each long job, and a
// small pool that all serial queues share, so that file events are handled while every worker is
// converting.
//
// Thread-safety: every operation may be called from any thread. Ownership: owns its threads; the
// main loop outlives it. Queues may outlive it; what is posted to them then is dropped.
#pragma once

#include <memory>

#include "platform/Dispatch.hpp"
#include "platform/linux/system/LongWorkQueue.hpp"
#include "platform/linux/system/ThreadPool.hpp"

namespace kestrivane {

class LinuxDispatch final : public Dispatch {
 public:
  /// Throws `std::system_error` when the system has no thread left.
  static std::unique_ptr<LinuxDispatch> create(EventLoop& mainLoop);
  /// Runs what is queued: first long work, then heavy work, then the serial queues. Work for a
  /// queue that has ended is dropped.
  ~LinuxDispatch() override;

  EventLoop& mainLoop() override { return mainLoop_; }
  /// One queue for both qualities of service: conversions are all that it runs.
  Executor& globalQueue(QualityOfService qualityOfService) override;
  Executor& longWorkQueue() override { return longWork_; }
  std::shared_ptr<Executor> makeSerialQueue(std::string_view label,
                                            QualityOfService qualityOfService) override;

 private:
  LinuxDispatch(EventLoop& mainLoop, std::shared_ptr<ThreadPool> workers,
                std::shared_ptr<ThreadPool> serialThreads);

  EventLoop& mainLoop_;
  LongWorkQueue longWork_;
  const std::shared_ptr<ThreadPool> workers_;
  const std::shared_ptr<ThreadPool> serialThreads_;
};

}  // namespace kestrivane

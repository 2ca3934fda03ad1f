// A queue of libdispatch as an executor.
//
// Thread-safety: every operation may be called from any thread. Ownership: owns a reference to the
// system's queue and shares the group that counts its jobs. What is queued when it is destroyed is
// dropped when its turn comes.
#pragma once

#include <memory>

#include "async/Executor.hpp"

struct dispatch_queue_s;

namespace kestrivane {

class DispatchGroup;

class DispatchQueue final : public Executor {
 public:
  /// Takes over the caller's reference to `queue`.
  DispatchQueue(dispatch_queue_s* queue, std::shared_ptr<DispatchGroup> group);
  ~DispatchQueue() override;

  void post(Job job) override;

  /// Lent: lives as long as this object.
  dispatch_queue_s* handle() const { return queue_; }

 private:
  dispatch_queue_s* const queue_;
  const std::shared_ptr<DispatchGroup> group_;
  const std::shared_ptr<const bool> token_ = std::make_shared<const bool>(true);
};

}  // namespace kestrivane

// A `Dispatch` whose queues all run on one hand-driven loop.
//
// Thread-safety and ownership: as `VirtualLoop`, which it owns. Queues must not outlive it.
#pragma once

#include <memory>
#include <string_view>
#include <utility>

#include "platform/Dispatch.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {

class FakeDispatch final : public Dispatch {
 public:
  VirtualLoop loop;

  EventLoop& mainLoop() override { return loop; }
  Executor& globalQueue(QualityOfService) override { return loop; }
  Executor& longWorkQueue() override { return loop; }
  std::shared_ptr<Executor> makeSerialQueue(std::string_view, QualityOfService) override {
    return std::make_shared<Forward>(loop);
  }

 private:
  class Forward final : public Executor {
   public:
    explicit Forward(Executor& target) : target_(target) {}
    void post(Job job) override { target_.post(std::move(job)); }

   private:
    Executor& target_;
  };
};

}  // namespace kestrivane::test

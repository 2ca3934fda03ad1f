#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/OrderedStrips.hpp"

#include <algorithm>
#include <system_error>
#include <thread>
#include <vector>

namespace kestrivane {

OrderedStrips::OrderedStrips(std::size_t count, std::size_t threads)
    : count_(count),
      threads_(std::min<std::size_t>({std::thread::hardware_concurrency(), count, threads})) {}

void OrderedStrips::run(const std::function<void()>& work) {
  {
    std::vector<std::jthread> helpers;
    try {
      while (helpers.size() + 1 < threads_)
        helpers.emplace_back([this, &work] { runOnce(work); });
    } catch (const std::system_error&) {
      // Fewer than wanted, down to none, will do.
    }
    runOnce(work);
  }
  if (failure_) std::rethrow_exception(failure_);
}

std::optional<std::size_t> OrderedStrips::take() {
  const std::scoped_lock lock(mutex_);
  if (failure_ || taken_ == count_) return {};
  return taken_++;
}

void OrderedStrips::inOrder(std::size_t strip, const std::function<void()>& handOn) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return handedOn_ == strip || failure_; });
  if (failure_) return;
  handOn();
  ++handedOn_;
  changed_.notify_all();
}

void OrderedStrips::runOnce(const std::function<void()>& work) noexcept {
  try {
    work();
  } catch (...) {
    const std::scoped_lock lock(mutex_);
    failure_ = std::current_exception();
    changed_.notify_all();
  }
}

}  // namespace kestrivane

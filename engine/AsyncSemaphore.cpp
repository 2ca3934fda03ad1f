#include "engine/AsyncSemaphore.hpp"

#include <exception>
#include <limits>
#include <utility>

namespace kestrivane {

void AsyncSemaphore::signal() {
  Continuation next;
  {
    const std::lock_guard lock(mutex_);
    if (waiters_.empty()) {
      if (value_ == std::numeric_limits<long>::max()) std::terminate();
      ++value_;
      return;
    }
    next = std::move(waiters_.front());
    waiters_.pop_front();
  }
  next.resume();
}

long AsyncSemaphore::value() const {
  const std::lock_guard lock(mutex_);
  return value_;
}

}  // namespace kestrivane

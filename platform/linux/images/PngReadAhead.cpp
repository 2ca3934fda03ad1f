#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngReadAhead.hpp"

#include <algorithm>
#include <system_error>

#include "platform/linux/images/ImageError.hpp"

namespace kestrivane::png {
namespace {

constexpr std::size_t blockBytes = 256 * 1024;

}  // namespace

ReadAhead::ReadAhead(Inflater& inflater, std::uint64_t totalBytes)
    : inflater_(inflater), totalBytes_(totalBytes) {}

void ReadAhead::start() {
  if (totalBytes_ <= blockBytes) return;
  try {
    thread_ = std::jthread([this](const std::stop_token& stop) { work(stop); });
  } catch (const std::system_error&) {
  }
}

const std::uint8_t* ReadAhead::take(std::size_t count) {
  if (rest_.empty()) nextBlock();
  if (count <= rest_.size()) {
    const std::uint8_t* const bytes = rest_.data();
    rest_ = rest_.subspan(count);
    return bytes;
  }
  joined_.clear();
  while (joined_.size() < count) {
    if (rest_.empty()) nextBlock();
    const auto part = rest_.first(std::min(count - joined_.size(), rest_.size()));
    joined_.insert(joined_.end(), part.begin(), part.end());
    rest_ = rest_.subspan(part.size());
  }
  return joined_.data();
}

void ReadAhead::work(const std::stop_token& stop) noexcept {
  try {
    for (std::uint64_t number = 0; sizeOf(number) > 0; ++number) {
      std::unique_lock lock(mutex_);
      if (!changed_.wait(lock, stop, [&] { return number < freed_ + blocks_.size(); })) return;
      lock.unlock();
      fill(number);
      lock.lock();
      filled_ = number + 1;
      changed_.notify_one();
    }
  } catch (...) {
    const std::scoped_lock lock(mutex_);
    failure_ = std::current_exception();
    changed_.notify_one();
  }
}

void ReadAhead::fill(std::uint64_t number) {
  Block& block = blocks_[number % blocks_.size()];
  if (!block) block = std::make_unique_for_overwrite<std::uint8_t[]>(blockBytes);
  const std::span<std::uint8_t> target(block.get(), sizeOf(number));
  if (inflater_.readUpTo(target) != target.size()) throw ImageError("the PNG has too few pixels");
}

/// Waits for it if there is a thread.
void ReadAhead::nextBlock() {
  if (thread_.joinable()) {
    std::unique_lock lock(mutex_);
    freed_ = taken_;
    changed_.notify_one();
    changed_.wait(lock, [&] { return filled_ > taken_ || failure_; });
    if (filled_ == taken_) std::rethrow_exception(failure_);
  } else {
    fill(taken_);
  }
  rest_ = {blocks_[taken_ % blocks_.size()].get(), sizeOf(taken_)};
  ++taken_;
}

/// 0 after the last block.
std::size_t ReadAhead::sizeOf(std::uint64_t number) const {
  const std::uint64_t begin = std::min(number * blockBytes, totalBytes_);
  return static_cast<std::size_t>(std::min<std::uint64_t>(totalBytes_ - begin, blockBytes));
}

}  // namespace kestrivane::png

// Collects what a stream delivers and waits for it.
//
// Thread-safety: every operation may be called from any thread. Ownership: outlives the stream
// whose callback it gave.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/FileEventStream.hpp"

namespace kestrivane::test {

struct ReceivedEvent {
  std::string path;
  std::uint32_t flags;

  friend bool operator==(const ReceivedEvent&, const ReceivedEvent&) = default;
};

class EventRecorder {
 public:
  using Batch = std::vector<ReceivedEvent>;

  FileEventStream::Callback callback() {
    return [this](std::span<const std::string> paths, std::span<const std::uint32_t> flags) {
      const std::lock_guard lock(mutex_);
      Batch& batch = batches_.emplace_back();
      for (std::size_t i = 0; i < paths.size(); ++i) {
        batch.push_back({paths[i], flags[i]});
        seen_.emplace(paths[i], flags[i]);
        if (i > 0 && (flags[i - 1] & flags[i] & fileEventItemRenamed) != 0)
          ++renames_[{paths[i - 1], paths[i]}];
      }
      changed_.notify_all();
    };
  }

  std::vector<Batch> batches() const {
    const std::lock_guard lock(mutex_);
    return batches_;
  }

  Batch events() const {
    Batch all;
    for (const Batch& batch : batches())
      all.insert(all.end(), batch.begin(), batch.end());
    return all;
  }

  /// Whether the event has been delivered, exactly so.
  bool has(const std::string& path, std::uint32_t flags) const {
    const std::lock_guard lock(mutex_);
    return seen_.contains({path, flags});
  }

  /// How often `from` and `to` stand next to each other in one batch, both as renamed.
  std::size_t renames(const std::string& from, const std::string& to) const {
    const std::lock_guard lock(mutex_);
    const auto found = renames_.find({from, to});
    return found == renames_.end() ? 0 : found->second;
  }

  /// Waits until `condition` holds; looks again after every batch. False when it never does.
  bool waitUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (;;) {
      const std::size_t before = batchCount();
      if (condition()) return true;
      std::unique_lock lock(mutex_);
      if (!changed_.wait_until(lock, end, [&] { return batches_.size() != before; })) return false;
    }
  }

  bool waitFor(const std::string& path, std::uint32_t flags) {
    return waitUntil([&] { return has(path, flags); });
  }
  bool waitForRename(const std::string& from, const std::string& to) {
    return waitUntil([&] { return renames(from, to) > 0; });
  }

 private:
  std::size_t batchCount() const {
    const std::lock_guard lock(mutex_);
    return batches_.size();
  }

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Batch> batches_;
  std::set<std::pair<std::string, std::uint32_t>> seen_;
  std::map<std::pair<std::string, std::string>, std::size_t> renames_;
};

}  // namespace kestrivane::test

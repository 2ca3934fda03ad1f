// The ordered list of an engine's converters.
//
// Thread-safety: a lock serialises the callers. Ownership: shares the converters with the copies of
// the list that it hands out.
#pragma once

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "engine/FileConverter.hpp"

namespace kestrivane {

class ConvertersActor {
 public:
  using Converters = std::vector<std::shared_ptr<const FileConverter>>;

  /// Adds to the end, duplicates too.
  void append(std::shared_ptr<const FileConverter> converter) {
    const std::lock_guard lock(mutex_);
    converters_.push_back(std::move(converter));
  }

  /// A copy of the list, in the order of registration.
  Converters converters() const {
    const std::lock_guard lock(mutex_);
    return converters_;
  }

 private:
  mutable std::mutex mutex_;
  Converters converters_;
};

}  // namespace kestrivane

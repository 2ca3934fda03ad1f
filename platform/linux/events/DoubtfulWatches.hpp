// Directories that may have moved away, until that is known.
//
// A directory is looked for where the tree has it once the kernel's queue has been read to its end.
// If it is not there, the report of its arrival elsewhere may be about to be queued: it is given up
// only when it is still missing a while later. Time is what the caller says it is. Thread-safety:
// none. Ownership: the registry and the resolver outlive it.
#pragma once

#include <chrono>
#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/linux/events/WatchRegistry.hpp"

namespace kestrivane {

class DoubtfulWatches {
 public:
  DoubtfulWatches(WatchRegistry& registry, NameResolver& resolver)
      : registry_(registry), resolver_(resolver) {}

  using TimePoint = std::chrono::steady_clock::time_point;

  /// To be called when the kernel's queue has been read to its end. Returns the directories that
  /// were found; what is in them may have been listed under another one's name.
  std::vector<WatchRegistry::Location> settle(TimePoint now);

  /// When `settle` gives up a directory that is missing.
  std::optional<TimePoint> deadline() const { return deadline_; }

  /// Whether the place of a directory of this stream is in doubt.
  bool concern(StreamId stream) const;

 private:
  /// When a directory that is missing is given up; nothing as long as its place is only in doubt.
  using GivenUp = std::optional<TimePoint>;

  GivenUp settle(int watch, GivenUp before, TimePoint now,
                 std::vector<WatchRegistry::Location>& found, bool& isSettled);

  WatchRegistry& registry_;
  NameResolver& resolver_;
  std::unordered_map<int, GivenUp> watches_;
  GivenUp deadline_;
};

}  // namespace kestrivane

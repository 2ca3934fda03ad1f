// Directories that may have moved away, until that is known.
//
// A directory is looked for where the tree has it once the kernel's queue has been read to its end.
// If it is not there, the report of its arrival elsewhere may have been queued since: it is given
// up only when it is still missing after the queue has been read to its end again. Thread-safety:
// none. Ownership: the registry and the resolver outlive it.
#pragma once

#include <unordered_map>
#include <vector>

#include "platform/linux/events/WatchRegistry.hpp"

namespace kestrivane {

class DoubtfulWatches {
 public:
  DoubtfulWatches(WatchRegistry& registry, NameResolver& resolver)
      : registry_(registry), resolver_(resolver) {}

  /// To be called when the kernel's queue has been read to its end. Returns the directories that
  /// were found; what is in them may have been listed under another one's name.
  std::vector<WatchRegistry::Location> settle();

  /// Whether directories are missing that the next call gives up.
  bool hasMissing() const { return missing_ > 0; }

  /// Whether the place of a directory of this stream is in doubt.
  bool concern(StreamId stream) const;

 private:
  enum class State { doubtful, missing };

  State settle(int watch, State before, std::vector<WatchRegistry::Location>& found,
               bool& isSettled);

  WatchRegistry& registry_;
  NameResolver& resolver_;
  std::unordered_map<int, State> watches_;
  std::size_t missing_ = 0;
};

}  // namespace kestrivane

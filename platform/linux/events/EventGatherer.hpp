// Pairs the halves of renames and gathers events into batches. Time is what the caller says it is.
//
// The first event after a quiet period is due at once, later ones when the latency has passed. An
// old name waits, outside of the batch, for its new name, so that the two always stand next to each
// other; without a new name it is reported alone once the latency has passed. Staging files (see
// `StagingName.hpp`) are kept quiet. Thread-safety: none. Ownership: owns the gathered events.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace kestrivane {

/// Events in the order of their delivery; both lists have the same length.
struct EventBatch {
  std::vector<std::string> paths;
  std::vector<std::uint32_t> flags;  ///< of `FileEventFlag`

  bool empty() const { return paths.empty(); }
};

class EventGatherer {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  enum class Deferral {
    firstAtOnce,  ///< the first event after a quiet period is due at once
    always        ///< every event is gathered for the latency
  };

  /// Whether everything that the kernel has queued has been added.
  enum class KernelQueue { drained, moreToRead };

  EventGatherer(std::chrono::nanoseconds latency, Deferral deferral)
      : latency_(latency), deferral_(deferral) {}

  void add(std::string path, std::uint32_t flags, TimePoint now);

  /// The old name of a rename. `cookie` is the number that the kernel gives both halves;
  /// `kindFlag` says whether the item is a file or a directory.
  void addOldName(std::string path, std::uint32_t kindFlag, std::uint32_t cookie, TimePoint now);

  /// The new name of a rename, next to its old name if that was added and still waits.
  void addNewName(std::string path, std::uint32_t kindFlag, std::uint32_t cookie, TimePoint now);

  /// What is due at `now`; empty when nothing is. As long as the kernel's queue holds more, no old
  /// name is given up.
  EventBatch take(TimePoint now, KernelQueue queue);

  /// When `take` has something to hand out, if nothing more is added.
  std::optional<TimePoint> deadline() const;

 private:
  struct OldName {
    std::string path;
    std::uint32_t kindFlag;
    std::uint32_t cookie;
    TimePoint since;
  };

  void append(std::string path, std::uint32_t flags, TimePoint now);
  bool giveUpOldNames(TimePoint now);

  std::chrono::nanoseconds latency_;
  Deferral deferral_;
  EventBatch gathered_;
  std::optional<TimePoint> due_;        // of what is gathered
  std::optional<TimePoint> delivered_;  // when `take` handed out last
  std::deque<OldName> waiting_;         // oldest first
};

}  // namespace kestrivane

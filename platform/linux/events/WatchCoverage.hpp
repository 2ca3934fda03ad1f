// How much of a folder is watched, and who is told of that and of mounts. Thread-safety: a value
// and function types. Ownership: none.
#pragma once

#include <functional>
#include <string>

namespace kestrivane {

enum class WatchCoverage {
  complete,  ///< the folder and every directory below it
  partial,   ///< not every directory: the log says why
  none       ///< not even the folder itself
};

/// Told once for each folder of a stream when the first walk is over; with `complete`, no rename
/// made from then on is lost. Called on a thread of the service, which waits for it to return.
using WatchingObserver = std::function<void(const std::string& path, WatchCoverage coverage)>;

/// Told whenever a file system was mounted or unmounted, once there has been a stream. Called on a
/// thread of the service, which waits for it to return.
using MountsObserver = std::function<void()>;

}  // namespace kestrivane

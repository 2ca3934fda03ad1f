#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/DoubtfulWatches.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kestrivane {
namespace {

/// How long a directory may be at no place that is known. The kernel queues the event of a rename
/// after the new name is there, and whoever renames may be held up in between.
constexpr std::chrono::milliseconds patience{50};

}  // namespace

std::vector<WatchRegistry::Location> DoubtfulWatches::settle(TimePoint now) {
  for (const int watch : registry_.takeDoubtful())
    watches_.try_emplace(watch);
  std::vector<WatchRegistry::Location> found;
  deadline_.reset();
  for (auto each = watches_.begin(); each != watches_.end();) {
    bool isSettled = true;
    each->second = settle(each->first, each->second, now, found, isSettled);
    if (!isSettled && each->second)
      deadline_ = deadline_ ? std::min(*deadline_, *each->second) : each->second;
    each = isSettled ? watches_.erase(each) : std::next(each);
  }
  return found;
}

DoubtfulWatches::GivenUp DoubtfulWatches::settle(int watch, GivenUp before, TimePoint now,
                                                 std::vector<WatchRegistry::Location>& found,
                                                 bool& isSettled) {
  GivenUp givenUp;
  for (WatchRegistry::Location& location : registry_.locate(watch)) {
    switch (registry_.presence(location.directory, resolver_)) {
      case WatchRegistry::Presence::present:
        found.push_back(std::move(location));
        break;
      case WatchRegistry::Presence::unknown:
        isSettled = false;
        break;
      case WatchRegistry::Presence::gone:
        if (before && *before <= now) {
          registry_.remove(location.directory);
        } else {
          givenUp = before ? before : now + patience;
          isSettled = false;
        }
        break;
    }
  }
  return givenUp;
}

bool DoubtfulWatches::concern(StreamId stream) const {
  return std::any_of(watches_.begin(), watches_.end(), [&](const auto& each) {
    const auto locations = registry_.locate(each.first);
    return std::any_of(locations.begin(), locations.end(),
                       [&](const auto& location) { return location.stream == stream; });
  });
}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/DoubtfulWatches.hpp"

#include <algorithm>
#include <utility>

namespace kestrivane {

std::vector<WatchRegistry::Location> DoubtfulWatches::settle() {
  for (const int watch : registry_.takeDoubtful())
    watches_.try_emplace(watch, State::doubtful);
  std::vector<WatchRegistry::Location> found;
  missing_ = 0;
  for (auto each = watches_.begin(); each != watches_.end();) {
    bool isSettled = true;
    each->second = settle(each->first, each->second, found, isSettled);
    if (!isSettled && each->second == State::missing) ++missing_;
    each = isSettled ? watches_.erase(each) : std::next(each);
  }
  return found;
}

DoubtfulWatches::State DoubtfulWatches::settle(int watch, State before,
                                               std::vector<WatchRegistry::Location>& found,
                                               bool& isSettled) {
  State state = State::doubtful;
  for (WatchRegistry::Location& location : registry_.locate(watch)) {
    switch (registry_.presence(location.directory, resolver_)) {
      case WatchRegistry::Presence::present:
        found.push_back(std::move(location));
        break;
      case WatchRegistry::Presence::unknown:
        isSettled = false;
        break;
      case WatchRegistry::Presence::gone:
        if (before == State::missing) {
          registry_.remove(location.directory);
        } else {
          state = State::missing;
          isSettled = false;
        }
        break;
    }
  }
  return state;
}

bool DoubtfulWatches::concern(StreamId stream) const {
  return std::any_of(watches_.begin(), watches_.end(), [&](const auto& each) {
    const auto locations = registry_.locate(each.first);
    return std::any_of(locations.begin(), locations.end(),
                       [&](const auto& location) { return location.stream == stream; });
  });
}

}  // namespace kestrivane

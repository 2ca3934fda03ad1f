#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/EventGatherer.hpp"

#include <algorithm>
#include <utility>

#include "platform/FileEventStream.hpp"
#include "platform/linux/StagingName.hpp"

namespace kestrivane {

void EventGatherer::add(std::string path, std::uint32_t flags, TimePoint now) {
  if (!isStagingPath(path)) append(std::move(path), flags, now);
}

void EventGatherer::addOldName(std::string path, std::uint32_t kindFlag, std::uint32_t cookie,
                               TimePoint now) {
  waiting_.push_back({std::move(path), kindFlag, cookie, now});
}

void EventGatherer::addNewName(std::string path, std::uint32_t kindFlag, std::uint32_t cookie,
                               TimePoint now) {
  // The kernel queues both halves one after the other: the partner is nearly always the last one.
  const auto found = std::find_if(waiting_.rbegin(), waiting_.rend(),
                                  [&](const OldName& old) { return old.cookie == cookie; });
  if (found == waiting_.rend()) {
    add(std::move(path), fileEventItemRenamed | kindFlag, now);
    return;
  }
  OldName old = std::move(*found);
  waiting_.erase(std::prev(found.base()));
  const bool fromStaging = isStagingPath(old.path);
  const bool toStaging = isStagingPath(path);
  if (!fromStaging && !toStaging) {
    append(std::move(old.path), fileEventItemRenamed | old.kindFlag, now);
    append(std::move(path), fileEventItemRenamed | kindFlag, now);
  } else if (fromStaging != toStaging) {
    // A staging file took the item's place, or gave it up: to others, the item is another one now.
    append(std::move(toStaging ? old.path : path), fileEventItemModified | kindFlag, now);
  }
}

EventBatch EventGatherer::take(TimePoint now, KernelQueue queue) {
  if (queue == KernelQueue::drained && giveUpOldNames(now)) due_ = now;
  if (!due_ || *due_ > now) return {};
  due_.reset();
  delivered_ = now;
  return std::exchange(gathered_, {});
}

std::optional<EventGatherer::TimePoint> EventGatherer::deadline() const {
  if (waiting_.empty()) return due_;
  const TimePoint givenUp = waiting_.front().since + latency_;
  return due_ ? std::min(*due_, givenUp) : givenUp;
}

void EventGatherer::append(std::string path, std::uint32_t flags, TimePoint now) {
  if (!due_) {
    if (deferral_ == Deferral::always) {
      due_ = now + latency_;
    } else {
      due_ = delivered_ ? std::max(now, *delivered_ + latency_) : now;
    }
  }
  gathered_.paths.push_back(std::move(path));
  gathered_.flags.push_back(flags);
}

bool EventGatherer::giveUpOldNames(TimePoint now) {
  bool added = false;
  while (!waiting_.empty() && waiting_.front().since + latency_ <= now) {
    OldName old = std::move(waiting_.front());
    waiting_.pop_front();
    if (isStagingPath(old.path)) continue;
    append(std::move(old.path), fileEventItemRenamed | old.kindFlag, now);
    added = true;
  }
  return added;
}

}  // namespace kestrivane

#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacFileEventService.hpp"

#include <utility>

#include <CoreServices/CoreServices.h>

#include "platform/macos/MacFileEventStream.hpp"

namespace kestrivane {

FileEventId MacFileEventService::currentEventId() {
  return FSEventsGetCurrentEventId();
}

std::unique_ptr<FileEventStream> MacFileEventService::createStream(
    FileEventStreamConfiguration configuration, std::shared_ptr<Executor> queue,
    FileEventStream::Callback callback) {
  return MacFileEventStream::create(configuration, queue, std::move(callback));
}

}  // namespace kestrivane

#include "monitor/FileObserver.hpp"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

namespace kestrivane {

FileObserver::FileObserver(FileEventService& fileEvents, Dispatch& dispatch, const FileURL& file,
                           std::function<void()> onChange)
    : onChange_(std::make_shared<const std::function<void()>>(std::move(onChange))) {
  const auto tell = [weak = std::weak_ptr(onChange_)] {
    if (const auto handler = weak.lock()) (*handler)();
  };
  stream_ = fileEvents.createStream(
      {.paths = {file.deletingLastPathComponent().path()},
       .sinceWhen = fileEvents.currentEventId(),
       .latency = std::chrono::milliseconds(100),
       .flags = fileEventStreamNoDefer | fileEventStreamFileEvents},
      dispatch.makeSerialQueue("com.kestrivane.FileObserver", QualityOfService::background),
      [file, tell, &mainLoop = dispatch.mainLoop()](auto paths, auto flags) {
        const bool someWereLost = std::ranges::any_of(
            flags, [](std::uint32_t word) { return (word & fileEventMustScanSubdirs) != 0; });
        if (someWereLost || std::ranges::find(paths, file.path()) != paths.end())
          mainLoop.post(tell);
      });
  if (stream_) stream_->start();
}

FileObserver::~FileObserver() {
  if (stream_) stream_->stop();
}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/InotifyFileEventService.hpp"

#include <algorithm>
#include <utility>

#include "platform/PlatformError.hpp"
#include "platform/linux/events/EventReader.hpp"

namespace kestrivane {

namespace {

class InotifyFileEventStream final : public FileEventStream {
 public:
  InotifyFileEventStream(EventReader& reader, StreamId id,
                         FileEventStreamConfiguration configuration,
                         std::shared_ptr<Executor> queue, std::shared_ptr<EventDelivery> delivery)
      : reader_(reader),
        id_(id),
        configuration_(std::move(configuration)),
        queue_(std::move(queue)),
        delivery_(std::move(delivery)) {}

  bool start() override {
    reader_.addStream(id_, configuration_, queue_, delivery_);
    return true;
  }

  void stop() override {
    delivery_->stop();
    reader_.removeStream(id_);
  }

 private:
  EventReader& reader_;
  StreamId id_;
  FileEventStreamConfiguration configuration_;
  std::shared_ptr<Executor> queue_;
  std::shared_ptr<EventDelivery> delivery_;
};

void dropTrailingSlashes(std::string& path) {
  while (path.size() > 1 && path.back() == '/')
    path.pop_back();
}

}  // namespace

InotifyFileEventService::InotifyFileEventService(UnifiedLog& log, WatchingObserver onWatching,
                                                 MountsObserver onMountsChange)
    : logger_(log.makeLogger(logSubsystem, "InotifyFileEventService")),
      onWatching_(std::move(onWatching)),
      onMountsChange_(std::move(onMountsChange)) {}

InotifyFileEventService::~InotifyFileEventService() = default;

FileEventId InotifyFileEventService::currentEventId() {
  const std::lock_guard lock(mutex_);
  return reader_ ? reader_->eventCount() : 0;
}

std::unique_ptr<FileEventStream> InotifyFileEventService::createStream(
    FileEventStreamConfiguration configuration, std::shared_ptr<Executor> queue,
    FileEventStream::Callback callback) {
  const bool hasOnlyAbsolutePaths =
      !configuration.paths.empty() &&
      std::all_of(configuration.paths.begin(), configuration.paths.end(),
                  [](const std::string& path) { return path.starts_with('/'); });
  if (!hasOnlyAbsolutePaths || (configuration.flags & fileEventStreamFileEvents) == 0) return {};
  std::for_each(configuration.paths.begin(), configuration.paths.end(), dropTrailingSlashes);

  const std::lock_guard lock(mutex_);
  try {
    if (!reader_) reader_ = EventReader::create(*logger_, onWatching_, onMountsChange_);
  } catch (const PlatformError& error) {
    logger_->log(LogLevel::error, "Не удалось начать приём событий файловой системы: " +
                                      error.localizedDescription());
    return {};
  }
  return std::make_unique<InotifyFileEventStream>(
      *reader_, ++lastStreamId_, std::move(configuration), std::move(queue),
      std::make_shared<EventDelivery>(std::move(callback)));
}

}  // namespace kestrivane

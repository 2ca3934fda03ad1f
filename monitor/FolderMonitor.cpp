#include "monitor/FolderMonitor.hpp"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "platform/Unicode.hpp"

namespace kestrivane {

std::shared_ptr<FolderMonitor> FolderMonitor::create(FileURL folderURL, const Services& services) {
  return std::shared_ptr<FolderMonitor>(new FolderMonitor(std::move(folderURL), services));
}

FolderMonitor::FolderMonitor(FileURL folderURL, const Services& services)
    : folderURL_(std::move(folderURL)),
      fileEvents_(services.fileEvents),
      fileManager_(services.fileManager),
      queue_(services.dispatch.makeSerialQueue("com.kestrivane.FolderMonitorQueue",
                                               QualityOfService::background)),
      logger_(services.log.makeLogger(logSubsystem, "FolderMonitor")),
      watchedFolder_(services.watchedFolders, folderURL_) {}

FolderMonitor::~FolderMonitor() {
  stop();
}

AsyncStream<FolderEvent> FolderMonitor::start() {
  auto [events, continuation] = AsyncStream<FolderEvent>::make();
  continuation_ = continuation;
  stream_ =
      fileEvents_.createStream({.paths = {folderURL_.path()},
                                .sinceWhen = fileEvents_.currentEventId(),
                                .latency = std::chrono::milliseconds(100),
                                .flags = fileEventStreamUseCFTypes | fileEventStreamNoDefer |
                                         fileEventStreamWatchRoot | fileEventStreamFileEvents},
                               queue_, [info = weak_from_this()](auto paths, auto flags) {
                                 folderMonitorCallback(info, paths, flags);
                               });
  if (!stream_) {
    logger_->log(LogLevel::error, "Ошибка при создании FSEventStream");
    continuation.finish();
    return std::move(events);
  }
  // Before the first event: which of several folders answers for a file is settled by then.
  watchedFolder_.enter(fileManager_.resolvingSymbolicLinks(folderURL_));
  stream_->start();
  logger_->log(LogLevel::info, "Начат мониторинг папки: " + folderURL_.path());
  return std::move(events);
}

void FolderMonitor::stop() {
  if (stream_) {
    stream_->stop();
    stream_.reset();
    watchedFolder_.leave();
    logger_->log(LogLevel::info, "Остановлен мониторинг папки: " + folderURL_.path());
  }
  if (continuation_) continuation_->finish();
  continuation_.reset();
}

void FolderMonitor::ignoreEvents(const FileURL& url) {
  watchedFolder_.beginProcessing(url);
  const std::lock_guard guard(lock_);
  activelyProcessingURLs_.insert(url);
}

void FolderMonitor::stopIgnoringEvents(const FileURL& url) {
  watchedFolder_.endProcessing(url);
  const std::lock_guard guard(lock_);
  activelyProcessingURLs_.erase(url);
}

void FolderMonitor::folderMonitorCallback(const std::weak_ptr<FolderMonitor>& info,
                                          std::span<const std::string> paths,
                                          std::span<const std::uint32_t> flags) {
  if (const std::shared_ptr<FolderMonitor> monitor = info.lock()) {
    monitor->handleEvents(paths, flags);
  }
}

void FolderMonitor::handleEvents(std::span<const std::string> paths,
                                 std::span<const std::uint32_t> flags) {
  if (flags.size() < paths.size()) std::terminate();

  // The old name of a rename whose new name has not come yet. Both stand in the same batch, so it
  // does not outlive this call.
  std::optional<FileURL> pending;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    FileURL url(paths[i]);
    if (isIgnored(url)) {
      logger_->log(LogLevel::debug, "Игнорируем событие для: " + paths[i]);
      continue;
    }
    if ((flags[i] & fileEventItemRenamed) == 0) continue;
    if (fileManager_.kindOfItem(url) == ItemKind::none) {
      pending = std::move(url);
    } else if (const auto oldURL = std::exchange(pending, std::nullopt)) {
      reportIfExtensionChanged(*oldURL, url);
    }
  }
}

bool FolderMonitor::isIgnored(const FileURL& url) {
  const std::lock_guard guard(lock_);
  return activelyProcessingURLs_.contains(url) ||
         std::ranges::any_of(activelyProcessingURLs_, [&url](const FileURL& ignored) {
           return url.path().starts_with(ignored.path()) &&
                  url.path().substr(ignored.path().size()).starts_with('/');
         });
}

void FolderMonitor::reportIfExtensionChanged(const FileURL& oldURL, const FileURL& newURL) {
  if (lowercased(oldURL.pathExtension()) == lowercased(newURL.pathExtension())) return;
  if (!watchedFolder_.answersFor(oldURL, newURL)) return;
  logger_->log(LogLevel::info, "Файл переименован с изменением расширения:\n" + oldURL.path() +
                                   " ->\n" + newURL.path());
  if (continuation_) continuation_->yield(FolderEvent::renamed(oldURL, newURL));
}

}  // namespace kestrivane

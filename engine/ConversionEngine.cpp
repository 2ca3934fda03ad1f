#include "engine/ConversionEngine.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

#include "async/RunOn.hpp"
#include "async/Sleep.hpp"
#include "async/TaskGroup.hpp"
#include "platform/PlatformError.hpp"
#include "platform/UUID.hpp"
#include "platform/Unicode.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

/// How long the events of the engine's own replacing or renaming may take to arrive.
constexpr std::chrono::milliseconds ownEventsPause{500};

std::string errorTitle() {
  return L10n::choose("Conversion error", "Ошибка конвертации");
}

/// A permit of the semaphore, handed back on every way out of the scope.
class Permit {
 public:
  explicit Permit(AsyncSemaphore& semaphore) : semaphore_(semaphore) {}
  Permit(const Permit&) = delete;
  Permit& operator=(const Permit&) = delete;
  ~Permit() { semaphore_.signal(); }

 private:
  AsyncSemaphore& semaphore_;
};

}  // namespace

std::shared_ptr<ConversionEngine> ConversionEngine::create(
    std::shared_ptr<FolderMonitor> folderMonitor, long maxConcurrentConversions,
    const Services& services) {
  std::shared_ptr<ConversionEngine> engine(
      new ConversionEngine(std::move(folderMonitor), maxConcurrentConversions, services));
  services.notificationCenter.requestAuthorization(authorizationAlert | authorizationSound,
                                                   [](bool, const std::exception_ptr&) {});
  return engine;
}

ConversionEngine::ConversionEngine(std::shared_ptr<FolderMonitor> folderMonitor,
                                   long maxConcurrentConversions, const Services& services)
    : folderMonitor_(std::move(folderMonitor)),
      services_(services),
      logger_(services.log.makeLogger(logSubsystem, "ConversionEngine")),
      concurrencySemaphore_(maxConcurrentConversions) {}

Task<void> ConversionEngine::registerConverter(std::shared_ptr<const FileConverter> converter) {
  convertersActor_.append(std::move(converter));
  co_return;
}

Task<void> ConversionEngine::start() {
  const auto self = shared_from_this();
  TaskGroup conversions(co_await currentContext());
  AsyncStream<FolderEvent> events = folderMonitor_->start();
  while (const std::optional<FolderEvent> event = co_await events.next()) {
    co_await concurrencySemaphore_.wait();
    conversions.add(convertHoldingPermit(weak_from_this(), event->oldURL, event->newURL));
  }
  co_await conversions.join();
}

void ConversionEngine::stop() {
  folderMonitor_->stop();
}

Task<void> ConversionEngine::convertHoldingPermit(std::weak_ptr<ConversionEngine> weakEngine,
                                                  FileURL from, FileURL to) {
  const std::shared_ptr<ConversionEngine> engine = weakEngine.lock();
  if (!engine) co_return;
  const Permit permit(engine->concurrencySemaphore_);
  co_await engine->processFile(std::move(from), std::move(to));
}

Task<void> ConversionEngine::processFile(FileURL from, FileURL to) {
  const std::string sourceExtension = lowercased(from.pathExtension());
  const std::string targetExtension = lowercased(to.pathExtension());
  const auto converter = converterFor(sourceExtension, targetExtension);
  if (!converter) co_return;

  if (onStatusChange) onStatusChange(true);
  folderMonitor_->ignoreEvents(to);

  const std::exception_ptr error = co_await convertInPlace(converter, to, targetExtension);
  if (error) {
    notify(errorTitle(), localizedDescription(error));
    co_await revert(to, sourceExtension);
  } else if (services_.userDefaults.boolForKey("showSuccessNotifications")) {
    notify(L10n::choose("File converted", "Файл конвертирован"),
           L10n::success(from.lastPathComponent(), to.lastPathComponent()));
  }

  // A cancelled sleep ends at once; the rest happens all the same.
  co_await sleepFor(ownEventsPause);
  folderMonitor_->stopIgnoringEvents(to);
  if (onStatusChange) onStatusChange(false);
}

Task<std::exception_ptr> ConversionEngine::convertInPlace(
    std::shared_ptr<const FileConverter> converter, FileURL url, std::string targetExtension) {
  try {
    const FileURL temporaryURL = services_.fileManager.temporaryDirectory().appendingPathComponent(
        makeUUIDString() + "." + targetExtension);
    // What somebody saves under the name during the conversion must not be overwritten.
    const FileVersion version = services_.fileManager.versionOfItem(url);
    co_await converter->convert(url, temporaryURL);
    // Replacing flushes to the disk, which takes too long for the main thread.
    const auto replace = [&fileManager = services_.fileManager, url, temporaryURL, version] {
      fileManager.replaceItem(url, temporaryURL, version);
    };
    co_await runOn(services_.dispatch.globalQueue(QualityOfService::userInitiated), replace);
    co_return nullptr;
  } catch (...) {
    co_return std::current_exception();
  }
}

Task<void> ConversionEngine::revert(FileURL url, std::string extension) {
  const std::string name = url.lastPathComponent();
  const FileURL target = url.deletingLastPathComponent().appendingPathComponent(
      url.deletingPathExtension().lastPathComponent() + "." + extension);
  bool moved = false;
  try {
    services_.fileManager.moveItem(url, target);
    moved = true;
  } catch (const std::exception&) {
    // Told below: the name is all that the user needs to find the file.
  }
  if (moved) {
    notify(errorTitle(), L10n::reverted(name, extension));
  } else {
    notify(L10n::choose("Critical error", "Критическая ошибка"), L10n::revertFailed(name));
  }
  co_return;
}

std::shared_ptr<const FileConverter> ConversionEngine::converterFor(std::string_view source,
                                                                    std::string_view target) const {
  const ConvertersActor::Converters converters = convertersActor_.converters();
  const auto accepting = std::ranges::find_if(
      converters, [&](const auto& converter) { return converter->canConvert(source, target); });
  return accepting == converters.end() ? nullptr : *accepting;
}

void ConversionEngine::notify(std::string title, std::string body) {
  services_.notificationCenter.add({.identifier = makeUUIDString(),
                                    .title = std::move(title),
                                    .body = std::move(body),
                                    .sound = NotificationSound::standard},
                                   [](const std::exception_ptr&) {});
}

}  // namespace kestrivane

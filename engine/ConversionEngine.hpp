// Converts the files of one watched folder: for every rename that changes an extension, the content
// is converted in place to the format of the new one; on failure the file is renamed back.
//
// Thread-safety: bound to the main thread, where it is destroyed too; converters and the replacing
// of files run on queues and are awaited. Ownership: shares its monitor with its creator; the
// services outlive it. A conversion under way keeps the engine alive.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "async/Task.hpp"
#include "engine/AsyncSemaphore.hpp"
#include "engine/ConvertersActor.hpp"
#include "engine/FileConverter.hpp"
#include "monitor/FolderMonitor.hpp"
#include "platform/Dispatch.hpp"
#include "platform/FileManager.hpp"
#include "platform/Logger.hpp"
#include "platform/NotificationCenter.hpp"
#include "platform/UserDefaults.hpp"

namespace kestrivane {

class ConversionEngine final : public std::enable_shared_from_this<ConversionEngine> {
 public:
  struct Services {
    FileManager& fileManager;
    NotificationCenter& notificationCenter;
    UserDefaults& userDefaults;
    UnifiedLog& log;
    Dispatch& dispatch;
  };

  /// Asks for the permission to show notifications; whatever the answer, the engine works.
  static std::shared_ptr<ConversionEngine> create(std::shared_ptr<FolderMonitor> folderMonitor,
                                                  long maxConcurrentConversions,
                                                  const Services& services);

  ConversionEngine(const ConversionEngine&) = delete;
  ConversionEngine& operator=(const ConversionEngine&) = delete;
  ~ConversionEngine() = default;

  /// Adds a converter to the end of the list; the first one that accepts a pair of extensions is
  /// used.
  Task<void> registerConverter(std::shared_ptr<const FileConverter> converter);

  /// The event loop. Ends when the monitor's stream has ended and every conversion has finished.
  Task<void> start();

  /// Stops the monitor, which lets `start` end.
  void stop();

  /// Called with true when a conversion starts and with false when it has ended. May be absent.
  std::function<void(bool isStarting)> onStatusChange;

 private:
  ConversionEngine(std::shared_ptr<FolderMonitor> folderMonitor, long maxConcurrentConversions,
                   const Services& services);

  static Task<void> convertHoldingPermit(std::weak_ptr<ConversionEngine> weakEngine, FileURL from,
                                         FileURL to);
  Task<void> processFile(FileURL from, FileURL to);
  Task<std::exception_ptr> convertInPlace(std::shared_ptr<const FileConverter> converter,
                                          FileURL url, std::string targetExtension);
  Task<void> revert(FileURL url, std::string extension);
  std::shared_ptr<const FileConverter> converterFor(std::string_view source,
                                                    std::string_view target) const;
  void notify(std::string title, std::string body);

  std::shared_ptr<FolderMonitor> folderMonitor_;
  Services services_;
  std::unique_ptr<Logger> logger_;
  AsyncSemaphore concurrencySemaphore_;
  ConvertersActor convertersActor_;
};

}  // namespace kestrivane

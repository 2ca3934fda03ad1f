// Tells when one file changes, is made or goes.
//
// Thread-safety: made and destroyed on the main thread, where it tells. Ownership: owns its stream;
// the services outlive it.
#pragma once

#include <functional>
#include <memory>

#include "platform/Dispatch.hpp"
#include "platform/FileEventStream.hpp"
#include "platform/FileURL.hpp"

namespace kestrivane {

class FileObserver {
 public:
  /// The folder of `file` exists. Where it cannot be watched, changes are not told.
  FileObserver(FileEventService& fileEvents, Dispatch& dispatch, const FileURL& file,
               std::function<void()> onChange);
  FileObserver(const FileObserver&) = delete;
  FileObserver& operator=(const FileObserver&) = delete;
  ~FileObserver();

 private:
  std::unique_ptr<FileEventStream> stream_;
  /// What a turn of the main loop that is still to come looks for.
  std::shared_ptr<const std::function<void()>> onChange_;
};

}  // namespace kestrivane

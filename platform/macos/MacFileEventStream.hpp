// An FSEvents stream.
//
// Thread-safety: `start` and `stop` one at a time, from any thread; callbacks come on the stream's
// queue. Ownership: owns the system's stream and the callback; shares the queue. What the system
// calls back into lives on until everything that was on the queue when the stream was stopped has
// run, so a callback that was already on its way finds it.
#pragma once

#include <memory>

#include <CoreServices/CoreServices.h>

#include "platform/FileEventStream.hpp"
#include "platform/macos/DispatchQueue.hpp"

namespace kestrivane {

class MacFileEventStream final : public FileEventStream {
 public:
  /// Null when the system makes no stream, a path is not UTF-8, or `queue` is not a
  /// `DispatchQueue`.
  static std::unique_ptr<FileEventStream> create(const FileEventStreamConfiguration& configuration,
                                                 const std::shared_ptr<Executor>& queue,
                                                 Callback callback);

  bool start() override;
  void stop() override;

 private:
  class Delivery;
  struct Releaser {
    void operator()(FSEventStreamRef stream) const { FSEventStreamRelease(stream); }
  };
  using StreamReference = std::unique_ptr<std::remove_pointer_t<FSEventStreamRef>, Releaser>;

  MacFileEventStream(std::shared_ptr<DispatchQueue> queue, std::shared_ptr<Delivery> delivery,
                     StreamReference stream);

  std::shared_ptr<DispatchQueue> queue_;
  std::shared_ptr<Delivery> delivery_;
  StreamReference stream_;  ///< null once it has been stopped
  bool isScheduled_ = false;
};

}  // namespace kestrivane

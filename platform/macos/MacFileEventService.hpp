// FSEvents behind the `FileEventService` interface.
//
// Thread-safety: may be used from any thread. Ownership: keeps no state. The queues that streams
// are made with are `DispatchQueue`s.
#pragma once

#include "platform/FileEventStream.hpp"

namespace kestrivane {

class MacFileEventService final : public FileEventService {
 public:
  FileEventId currentEventId() override;
  std::unique_ptr<FileEventStream> createStream(FileEventStreamConfiguration configuration,
                                                std::shared_ptr<Executor> queue,
                                                FileEventStream::Callback callback) override;
};

}  // namespace kestrivane

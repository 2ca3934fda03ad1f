// The threads of the program: the main one and the queues.
//
// Thread-safety: every operation may be called from any thread. Ownership: `Dispatch` owns its
// threads; destroying it runs the jobs that are queued, then ends the threads. The main loop
// outlives it.
#pragma once

#include <memory>
#include <string_view>

#include "async/EventLoop.hpp"

namespace kestrivane {

enum class QualityOfService { background, userInitiated };

class Dispatch {
 public:
  Dispatch() = default;
  Dispatch(const Dispatch&) = delete;
  Dispatch& operator=(const Dispatch&) = delete;
  virtual ~Dispatch() = default;

  /// The executor of the engines, the view model and the interface.
  virtual EventLoop& mainLoop() = 0;

  /// The concurrent queue for heavy work: as many jobs at once as there are processors.
  virtual Executor& globalQueue(QualityOfService qualityOfService) = 0;

  /// The queue for work that takes minutes or waits for others, so that the global queue stays free
  /// for what takes moments. Each job starts at once, on a thread that it has to itself until it
  /// ends, at user-initiated quality of service; who posts bounds how many there are. `post` throws
  /// `std::system_error` when the system has no thread left.
  virtual Executor& longWorkQueue() = 0;

  /// A queue of its own that runs one job at a time. `label` names it in debuggers.
  virtual std::shared_ptr<Executor> makeSerialQueue(std::string_view label,
                                                    QualityOfService qualityOfService) = 0;
};

}  // namespace kestrivane

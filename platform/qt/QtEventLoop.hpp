// The main loop of a program with Qt: jobs and timers run between Qt's own events.
//
// Thread-safety: `post`, `postAfter` and `cancelTimer` may be called from any thread; it is made
// and destroyed on the thread of the application object, where everything runs. Ownership: owns its
// pending jobs and timers and drops them when it is destroyed. The application object outlives it.
#pragma once

#include <QBasicTimer>
#include <QObject>
#include <chrono>
#include <map>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "async/EventLoop.hpp"

namespace kestrivane {

class QtEventLoop final : public QObject, public EventLoop {
 public:
  QtEventLoop() = default;
  ~QtEventLoop() override;

  void post(Job job) override;
  TimerId postAfter(std::chrono::nanoseconds delay, Job job) override;
  void cancelTimer(TimerId timer) override;

 private:
  using Clock = std::chrono::steady_clock;
  using Key = std::pair<Clock::time_point, TimerId>;

  bool event(QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  /// Lets Qt's timer ring when the earliest of ours falls due.
  void armTimer();
  std::map<Key, Job>::node_type takeDueTimer();

  QBasicTimer wakeUp_;

  std::mutex mutex_;
  TimerId lastId_ = 0;
  std::map<Key, Job> timers_;  ///< in the order in which they fall due
  std::unordered_map<TimerId, Clock::time_point> dueTimes_;  ///< of the timers in timers_
};

}  // namespace kestrivane

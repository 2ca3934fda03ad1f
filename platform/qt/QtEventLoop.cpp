#include "platform/qt/QtEventLoop.hpp"

#include <QCoreApplication>
#include <QEvent>
#include <algorithm>

namespace kestrivane {
namespace {

/// Keeps the addition of a delay to the current time from overflowing, and fits Qt's timers.
constexpr std::chrono::nanoseconds longestDelay = std::chrono::hours(24 * 20);

class JobEvent final : public QEvent {
 public:
  static constexpr Type type = User;
  explicit JobEvent(Executor::Job job) : QEvent(type), job_(std::move(job)) {}

  void run() { std::exchange(job_, nullptr)(); }

 private:
  Executor::Job job_;
};

}  // namespace

QtEventLoop::~QtEventLoop() {
  QCoreApplication::removePostedEvents(this);
  // A job's captures may call the loop while they are destroyed, so each job leaves the map first.
  while (!timers_.empty())
    timers_.extract(timers_.begin());
}

void QtEventLoop::post(Job job) {
  QCoreApplication::postEvent(this, new JobEvent(std::move(job)));
}

EventLoop::TimerId QtEventLoop::postAfter(std::chrono::nanoseconds delay, Job job) {
  delay = std::clamp(delay, std::chrono::nanoseconds(0), longestDelay);
  TimerId id = 0;
  bool isEarliest = false;
  {
    const std::lock_guard lock(mutex_);
    id = ++lastId_;
    const Clock::time_point due = Clock::now() + delay;
    const auto [entry, inserted] = timers_.emplace(Key(due, id), std::move(job));
    dueTimes_.emplace(id, due);
    isEarliest = entry == timers_.begin();
  }
  // Qt's timer belongs to the main thread.
  if (isEarliest) post([this] { armTimer(); });
  return id;
}

void QtEventLoop::cancelTimer(TimerId timer) {
  std::map<Key, Job>::node_type dropped;  // destroyed last: its captures may call the loop
  const std::lock_guard lock(mutex_);
  const auto entry = dueTimes_.find(timer);
  if (entry == dueTimes_.end()) return;
  dropped = timers_.extract(Key(entry->second, timer));
  dueTimes_.erase(entry);
}

bool QtEventLoop::event(QEvent* event) {
  if (event->type() != JobEvent::type) return QObject::event(event);
  static_cast<JobEvent*>(event)->run();
  return true;
}

void QtEventLoop::timerEvent(QTimerEvent*) {
  while (auto timer = takeDueTimer()) {
    timer.mapped()();
    timer = {};  // what the job owns is released before the next one runs
  }
  armTimer();
}

void QtEventLoop::armTimer() {
  const std::lock_guard lock(mutex_);
  if (timers_.empty()) {
    wakeUp_.stop();
    return;
  }
  const auto wait =
      std::chrono::ceil<std::chrono::milliseconds>(timers_.begin()->first.first - Clock::now());
  wakeUp_.start(std::max<int>(0, static_cast<int>(wait.count())), Qt::PreciseTimer, this);
}

std::map<QtEventLoop::Key, EventLoop::Job>::node_type QtEventLoop::takeDueTimer() {
  const std::lock_guard lock(mutex_);
  if (timers_.empty() || timers_.begin()->first.first > Clock::now()) return {};
  dueTimes_.erase(timers_.begin()->first.second);
  return timers_.extract(timers_.begin());
}

}  // namespace kestrivane

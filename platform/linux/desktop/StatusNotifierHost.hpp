// Whether a panel shows status items from the session bus: follows org.kde.StatusNotifierWatcher.
//
// Thread-safety: for the main thread; it never waits for the bus.
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <functional>

namespace kestrivane {

class StatusNotifierHost final : public QObject {
  Q_OBJECT

 public:
  /// `onChanged` is called when a panel has appeared, also for the first time, or is gone.
  StatusNotifierHost(const QDBusConnection& bus, std::function<void()> onChanged);

  bool isPresent() const { return isPresent_; }

 private slots:
  void ask();

 private:
  void setPresent(bool isPresent);

  QDBusConnection bus_;
  std::function<void()> onChanged_;
  QDBusServiceWatcher watcher_;
  bool isPresent_ = false;
};

}  // namespace kestrivane

// How the updater talks to the user: by notifications, with a button where there is something to
// decide (the interface org.freedesktop.Notifications).
//
// Thread-safety: for the main thread, which never waits for the service. Ownership: owns what is to
// be called for buttons, until their notifications are closed.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <functional>
#include <map>
#include <string>

#include "platform/NotificationCenter.hpp"
#include "platform/linux/updates/AppcastUpdater.hpp"

namespace kestrivane {

class DesktopUpdatePrompt final : public QObject, public UpdatePrompt {
  Q_OBJECT

 public:
  DesktopUpdatePrompt(const QDBusConnection& bus, NotificationCenter& notificationCenter);

  void tell(std::string text) override;
  void offer(std::string text, std::string button, std::function<void()> accept) override;
  void open(const FileURL& archive) override;

 private slots:
  void actionInvoked(uint id, const QString& action);
  void notificationClosed(uint id, uint reason);

 private:
  QDBusConnection bus_;
  NotificationCenter& notificationCenter_;
  std::map<uint, std::function<void()>> offers_;  ///< by the number of the notification
};

}  // namespace kestrivane

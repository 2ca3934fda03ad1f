// How the updater talks to the user: by notifications, with a button where there is something to
// decide (the interface org.freedesktop.Notifications). Where no service shows them, or one without
// buttons, a dialogue does, in a program of its own.
//
// Thread-safety: for the main thread, which never waits for the service. Ownership: the bundle
// outlives it; owns what is to be called for buttons, until they are gone, and open dialogues,
// which end with it.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <functional>
#include <map>
#include <string>

#include "platform/Bundle.hpp"
#include "platform/linux/updates/AppcastUpdater.hpp"

namespace kestrivane {

class DesktopUpdatePrompt final : public QObject, public UpdatePrompt {
  Q_OBJECT

 public:
  DesktopUpdatePrompt(const QDBusConnection& bus, const Bundle& bundle);

  void tell(std::string text) override;
  void offer(std::string text, std::string button, std::function<void()> accept) override;
  void open(const FileURL& archive) override;

 private slots:
  void actionInvoked(uint id, const QString& action);
  void notificationClosed(uint id, uint reason);

 private:
  struct Message {
    QString text;
    QString button;  ///< empty when there is nothing to decide
    std::function<void()> accept;
  };

  void show(const Message& message);
  void notify(const Message& message, bool isMarkup);
  void showDialogue(const Message& message);

  QDBusConnection bus_;
  const Bundle& bundle_;
  std::map<uint, std::function<void()>> offers_;  ///< by the number of the notification
};

}  // namespace kestrivane

// One application for each session: the first to start owns a name on the session bus and offers
// the interface org.freedesktop.Application (the Desktop Entry standard) there; later ones hand
// over to it what they were started for, and end.
//
// Thread-safety: for the main thread. Ownership: owns the name while it lives. Without a session
// bus every instance takes itself for the first.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <span>
#include <vector>

#include "platform/FileURL.hpp"

namespace kestrivane {

class SingleInstance final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  struct Handlers {
    std::function<void()> activate;                  ///< the program was started again
    std::function<void(std::vector<FileURL>)> open;  ///< with these folders
    std::function<void()> quit;                      ///< the action "quit"
  };

  SingleInstance(const QDBusConnection& bus, Handlers handlers);
  ~SingleInstance() override;

  /// Whether this instance is the first. What others hand over arrives once the event loop runs.
  bool isFirst() const { return isFirst_; }

  /// Tells the first instance of this start. False when it does not answer.
  bool handOver(std::span<const FileURL> folders);

  // The names are the interface's.
 public slots:  // NOLINT(readability-redundant-access-specifiers)
  void Activate(const QVariantMap& platformData);
  void Open(const QStringList& addresses, const QVariantMap& platformData);
  void ActivateAction(const QString& name, const QVariantList& parameter,
                      const QVariantMap& platformData);

 private:
  QDBusConnection bus_;
  Handlers handlers_;
  bool isFirst_ = true;
};

}  // namespace kestrivane

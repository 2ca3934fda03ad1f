// The appearance that the user has chosen for the desktop, as its portal tells: the setting
// color-scheme of org.freedesktop.appearance.
//
// Thread-safety: for the main thread; it never waits for the bus.
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QObject>
#include <functional>
#include <optional>

namespace kestrivane {

enum class Appearance { light, dark };

class PreferredAppearance final : public QObject {
  Q_OBJECT

 public:
  /// Nothing when the user does not mind, and where no portal tells.
  using Value = std::optional<Appearance>;

  /// `onChanged` is called when there is another one; at first there is none.
  PreferredAppearance(const QDBusConnection& bus, std::function<void(Value)> onChanged);

 private slots:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void ask();
  void take(const QVariant& setting);

  QDBusConnection bus_;
  std::function<void(Value)> onChanged_;
  QDBusServiceWatcher portal_;
  Value value_;
};

}  // namespace kestrivane

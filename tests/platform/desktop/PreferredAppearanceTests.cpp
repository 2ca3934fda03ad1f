// The desktop's appearance, over a portal on a bus of the test's own.
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusVariant>
#include <QTest>
#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/desktop/PreferredAppearance.hpp"
#include "tests/platform/system/PrivateBus.hpp"

namespace kestrivane::test {
namespace {

using namespace std::chrono_literals;
using Values = std::vector<PreferredAppearance::Value>;

constexpr auto service = "org.freedesktop.portal.Desktop";
constexpr auto path = "/org/freedesktop/portal/desktop";
constexpr auto appearanceGroup = "org.freedesktop.appearance";
constexpr auto colorScheme = "color-scheme";

/// A connection to a bus, closed when it goes.
class Connection {
 public:
  Connection(const PrivateBus& bus, const char* name)
      : name_(name),
        bus_(QDBusConnection::connectToBus(QString::fromStdString(bus.address()), name)) {}
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { QDBusConnection::disconnectFromBus(name_); }

  QDBusConnection& get() { return bus_; }

 private:
  const char* name_;
  QDBusConnection bus_;
};

class Portal final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

 public:
  Portal(const PrivateBus& bus, std::optional<uint> scheme)
      : connection_(bus, "portal"), scheme_(scheme) {
    connection_.get().registerObject(
        path, this, QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
    connection_.get().registerService(service);
  }
  ~Portal() override { connection_.get().unregisterService(service); }

 public slots:
  QDBusVariant Read(const QString& group, const QString& key) const {
    if (group != appearanceGroup || key != colorScheme || !scheme_) return QDBusVariant("");
    return QDBusVariant(QVariant::fromValue(QDBusVariant(*scheme_)));
  }

 signals:
  void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  Connection connection_;
  std::optional<uint> scheme_;
};

class PreferredAppearanceTest : public testing::Test {
 protected:
  void startPortal(std::optional<uint> scheme) { portal = std::make_unique<Portal>(bus, scheme); }

  void startApplication() {
    appearance = std::make_unique<PreferredAppearance>(
        connection.get(), [this](PreferredAppearance::Value value) { values.push_back(value); });
  }

  void expectValues(const Values& expected) {
    EXPECT_TRUE(QTest::qWaitFor([&] { return values.size() >= expected.size(); }, 60s / 1ms));
    EXPECT_EQ(values, expected);
  }

  /// Waits until the application has seen what was sent before.
  void settle() {
    bool isAnswered = false;
    QDBusMessage ping =
        QDBusMessage::createMethodCall(service, path, "org.freedesktop.DBus.Peer", "Ping");
    const QDBusPendingCallWatcher answer(connection.get().asyncCall(ping));
    QObject::connect(&answer, &QDBusPendingCallWatcher::finished,
                     [&isAnswered] { isAnswered = true; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return isAnswered; }, 60s / 1ms));
  }

  PrivateBus bus;
  Connection connection{bus, "application"};
  std::unique_ptr<Portal> portal;
  std::unique_ptr<PreferredAppearance> appearance;
  Values values;
};

TEST_F(PreferredAppearanceTest, IsDarkWhereTheUserHasChosenThat) {
  startPortal(1);
  startApplication();
  expectValues({Appearance::dark});
}

TEST_F(PreferredAppearanceTest, IsLightWhereTheUserHasChosenThat) {
  startPortal(2);
  startApplication();
  expectValues({Appearance::light});
}

TEST_F(PreferredAppearanceTest, FollowsWhatTheUserChooses) {
  startPortal(1);
  startApplication();
  expectValues({Appearance::dark});
  for (const uint scheme : {2U, 2U, 0U, 1U, 7U})
    emit portal->SettingChanged(appearanceGroup, colorScheme, QDBusVariant(scheme));
  expectValues({Appearance::dark, Appearance::light, std::nullopt, Appearance::dark, std::nullopt});
}

TEST_F(PreferredAppearanceTest, OverlooksOtherSettings) {
  startPortal(2);
  startApplication();
  expectValues({Appearance::light});
  emit portal->SettingChanged("org.example", colorScheme, QDBusVariant(1U));
  emit portal->SettingChanged(appearanceGroup, "contrast", QDBusVariant(1U));
  settle();
  expectValues({Appearance::light});
}

TEST_F(PreferredAppearanceTest, AsksAPortalThatComesLater) {
  startApplication();
  settle();
  expectValues({});
  startPortal(1);
  expectValues({Appearance::dark});
}

TEST_F(PreferredAppearanceTest, IsNothingWhereThePortalDoesNotKnow) {
  startPortal(std::nullopt);
  startApplication();
  settle();
  expectValues({});
}

}  // namespace
}  // namespace kestrivane::test

#include "PreferredAppearanceTests.moc"

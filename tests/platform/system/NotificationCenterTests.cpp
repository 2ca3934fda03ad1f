// Notifications on a real bus: what the service is told, and what happens without one.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/system/FreedesktopNotificationCenter.hpp"
#include "tests/platform/system/EnvironmentGuard.hpp"
#include "tests/platform/system/MockNotificationService.hpp"
#include "tests/platform/system/PrivateBus.hpp"
#include "tests/support/FakeLog.hpp"
#include "tests/support/FakeNotificationCenter.hpp"

namespace kestrivane::test {
namespace {

using Strings = std::vector<std::string>;

/// Gathers what completion handlers are told, on whichever thread.
class Outcomes {
 public:
  NotificationCenter::AddHandler handler() {
    return [this](const std::exception_ptr& error) {
      const std::lock_guard lock(mutex_);
      (error ? failures_ : successes_) += 1;
      changed_.notify_all();
    };
  }

  bool waitFor(int successes, int failures) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(20),
                             [&] { return successes_ == successes && failures_ == failures; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int successes_ = 0;
  int failures_ = 0;
};

NotificationRequest request(std::string title, std::string body,
                            NotificationSound sound = NotificationSound::standard) {
  return {"8D1E3C6A-0000-4000-8000-000000000000", std::move(title), std::move(body), sound};
}

class FreedesktopNotifications : public testing::Test {
 protected:
  PrivateBus bus;
  FakeLog log;
  Outcomes outcomes;
  std::unique_ptr<FreedesktopNotificationCenter> center =
      FreedesktopNotificationCenter::create(log);

  std::optional<MockNotificationService> service;
  void startService(Strings capabilities = {"body"}, Answers answers = Answers::always) {
    service.emplace(bus.address(), std::move(capabilities), answers);
  }
  void add(const std::string& title, const std::string& body) {
    center->add(request(title, body), outcomes.handler());
  }
};

TEST_F(FreedesktopNotifications, AreShownWithTitleBodyAndSound) {
  startService();
  add("Файл конвертирован", "Успешно: a.png -> a.jpg");
  EXPECT_TRUE(outcomes.waitFor(1, 0));
  const auto shown = service->waitForShown(1);
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].application, "Kestrivane");
  EXPECT_EQ(shown[0].replaces, 0U);
  EXPECT_EQ(shown[0].title, "Файл конвертирован");
  EXPECT_EQ(shown[0].body, "Успешно: a.png -> a.jpg");
  EXPECT_EQ(shown[0].hints, (Strings{"urgency=1", "sound-name=message-new-instant"}));
  EXPECT_EQ(shown[0].timeout, -1);
}

TEST_F(FreedesktopNotifications, AreSilentWhenAskedTo) {
  startService();
  center->add(request("a", "b", NotificationSound::none), outcomes.handler());
  const auto shown = service->waitForShown(1);
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].hints, (Strings{"urgency=1", "suppress-sound=true"}));
}

TEST_F(FreedesktopNotifications, EscapeTheBodyForAServiceThatSpeaksMarkup) {
  startService({"actions", "body", "body-markup"});
  add("<b> & co", "a&b.png -> <i>.jpg");
  const auto shown = service->waitForShown(1);
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].title, "<b> & co");
  EXPECT_EQ(shown[0].body, "a&amp;b.png -&gt; &lt;i&gt;.jpg");
}

TEST_F(FreedesktopNotifications, LeaveTheBodyAsItIsForAServiceThatDoesNot) {
  startService({"body", "body-hyperlinks"});
  add("a", "a&b.png -> <i>.jpg");
  const auto shown = service->waitForShown(1);
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].body, "a&b.png -> <i>.jpg");
}

TEST_F(FreedesktopNotifications, MakeOneLineOfValidTextOfEveryName) {
  startService();
  add("t\n", std::string("a\nb\x1b\0.png -> \xff\xfe.jpg", 19));
  const auto shown = service->waitForShown(1);
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].title, "t ");
  EXPECT_EQ(shown[0].body, "a b  .png -> \uFFFD\uFFFD.jpg");
}

TEST_F(FreedesktopNotifications, AreShownInOrder) {
  startService();
  for (int i = 0; i < 200; ++i)
    add("a", std::to_string(i));
  EXPECT_TRUE(outcomes.waitFor(200, 0));
  const auto shown = service->waitForShown(200);
  ASSERT_EQ(shown.size(), 200U);
  for (std::size_t i = 0; i < 200; ++i)
    EXPECT_EQ(shown[i].body, std::to_string(i));
}

TEST_F(FreedesktopNotifications, ReachAServiceThatWasStartedAnewWithItsOwnCapabilities) {
  startService({"body"});
  add("a", "<1>");
  EXPECT_TRUE(outcomes.waitFor(1, 0));
  service.reset();
  startService({"body", "body-markup"});
  add("a", "<2>");
  const auto shown = service->waitForShown(1);
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].body, "&lt;2&gt;");
}

TEST_F(FreedesktopNotifications, ReachAServiceOnABusThatWasStartedAnew) {
  startService();
  add("a", "1");
  EXPECT_TRUE(outcomes.waitFor(1, 0));
  service.reset();
  bus.stop();
  add("a", "lost");
  EXPECT_TRUE(outcomes.waitFor(1, 1));
  bus.start();
  startService();
  add("a", "2");
  const auto shown = service->waitForShown(1);
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].body, "2");
}

TEST_F(FreedesktopNotifications, AreDroppedWithOneLineInTheLogWithoutAService) {
  add("a", "1");
  add("a", "2");
  EXPECT_TRUE(outcomes.waitFor(0, 2));
  center.reset();
  EXPECT_EQ(log.messages(LogLevel::debug).size(), 1U);
  EXPECT_EQ(log.entries.size(), 1U);
}

TEST_F(FreedesktopNotifications, DoNotWaitForTheAnswerToTheOneBeforeForLong) {
  startService({"body"}, Answers::neverToNotify);
  add("a", "1");
  add("a", "2");
  const auto shown = service->waitForShown(2);
  ASSERT_EQ(shown.size(), 2U);
  EXPECT_EQ(shown[1].body, "2");
}

TEST_F(FreedesktopNotifications, AreHandedOverBeforeTheCenterGoes) {
  startService();
  for (int i = 0; i < 5; ++i)
    add("a", std::to_string(i));
  center.reset();
  EXPECT_EQ(service->waitForShown(5).size(), 5U);
}

TEST_F(FreedesktopNotifications, DoNotKeepTheCenterFromGoingWhenTheServiceIsSilent) {
  startService({"body"}, Answers::never);
  for (int i = 0; i < 5; ++i)
    add("a", std::to_string(i));
  ASSERT_TRUE(service->waitForCall());
  center.reset();  // ends, though the service is asked and does not answer
  EXPECT_EQ(service->waitForShown(0).size(), 0U);
}

TEST_F(FreedesktopNotifications, AreAllowedWithoutAsking) {
  bool wasGranted = false;
  center->requestAuthorization(
      authorizationAlert | authorizationSound,
      [&](bool granted, const std::exception_ptr& error) { wasGranted = granted && !error; });
  EXPECT_TRUE(wasGranted);
}

TEST(FreedesktopNotificationsWithoutABus, AreDroppedWithOneLineInTheLog) {
  const EnvironmentGuard address("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
  const EnvironmentGuard runtime("XDG_RUNTIME_DIR", std::nullopt);
  FakeLog log;
  Outcomes outcomes;
  auto center = FreedesktopNotificationCenter::create(log);
  center->add(request("a", "1"), outcomes.handler());
  center->add(request("a", "2"), nullptr);
  center->add(request("a", "3"), outcomes.handler());
  EXPECT_TRUE(outcomes.waitFor(0, 2));
  center.reset();
  EXPECT_EQ(log.messages(LogLevel::debug).size(), 1U);
  EXPECT_EQ(log.entries.size(), 1U);
}

/// What every notification centre does: the desktop's and the one of the unit tests.
class NotificationCenterConformance : public testing::TestWithParam<bool> {
 protected:
  PrivateBus bus;
  MockNotificationService service{bus.address(), {"body"}};
  FakeLog log;
  FakeNotificationCenter fake;
  std::unique_ptr<FreedesktopNotificationCenter> real = FreedesktopNotificationCenter::create(log);
  NotificationCenter& center = GetParam() ? static_cast<NotificationCenter&>(*real) : fake;

  Strings lines(std::size_t count) {
    if (!GetParam()) return fake.lines();
    Strings lines;
    for (const ShownNotification& shown : service.waitForShown(count))
      lines.push_back(shown.title + ": " + shown.body);
    return lines;
  }
};

TEST_P(NotificationCenterConformance, ShowsEachRequestOnceAndInOrder) {
  Outcomes outcomes;
  center.add(request("a", "1"), outcomes.handler());
  center.add(request("a", "2"), outcomes.handler());
  EXPECT_TRUE(outcomes.waitFor(2, 0));
  EXPECT_EQ(lines(2), (Strings{"a: 1", "a: 2"}));
}

TEST_P(NotificationCenterConformance, AnswersTheRequestForPermission) {
  bool wasGranted = false;
  center.requestAuthorization(
      authorizationSound, [&](bool granted, const std::exception_ptr&) { wasGranted = granted; });
  EXPECT_TRUE(wasGranted);
}

INSTANTIATE_TEST_SUITE_P(Centers, NotificationCenterConformance, testing::Bool(),
                         [](const auto& isReal) { return isReal.param ? "Desktop" : "Fake"; });

}  // namespace
}  // namespace kestrivane::test

// The main loop of the application.

#include <QCoreApplication>
#include <QGuiApplication>
#include <thread>
#include <vector>

#include "platform/qt/QtEventLoop.hpp"
#include "tests/platform/system/EventLoopConformance.hpp"

namespace kestrivane::test {
namespace {

class QtEventLoopSubject final : public Subject {
 public:
  EventLoop& loop() override { return loop_; }
  void run() override { QCoreApplication::exec(); }
  void stop() override { QCoreApplication::quit(); }

 private:
  QtEventLoop loop_;
};

INSTANTIATE_TEST_SUITE_P(QtEventLoop, EventLoopConformance,
                         testing::Values([] { return std::make_unique<QtEventLoopSubject>(); }));

TEST(QtEventLoop, TakesJobsAndTimersFromAllThreadsAndRunsThemOnItsOwn) {
  QtEventLoop loop;
  const std::thread::id own = std::this_thread::get_id();
  std::vector<int> counts(4, 0);
  int left = 4 * 1000;
  const auto count = [&] {
    EXPECT_EQ(std::this_thread::get_id(), own);
    if (--left == 0) QCoreApplication::quit();
  };
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      for (int n = 0; n < 500; ++n) {
        loop.post([&, i, n] {
          EXPECT_EQ(counts[i]++, n);  // in the order of the thread that posted
          count();
        });
        loop.postAfter(1ms, count);
      }
    });
  }
  QCoreApplication::exec();
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(left, 0);
}

TEST(QtEventLoop, WakesUpForAnEarlierTimerThatAnotherThreadMakes) {
  QtEventLoop loop;
  loop.postAfter(1h, [] { FAIL() << "an hour has passed"; });
  bool hasRun = false;
  std::thread other([&] {
    loop.postAfter(1ms, [&] {
      hasRun = true;
      QCoreApplication::quit();
    });
  });
  QCoreApplication::exec();
  other.join();
  EXPECT_TRUE(hasRun);
}

}  // namespace
}  // namespace kestrivane::test

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}

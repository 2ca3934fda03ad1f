// What is handed to the unified log.
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/macos/MacLogger.hpp"
#include "tests/macos/fakes/FakeSystem.hpp"

namespace kestrivane::test {
namespace {

class MacLoggerTests : public testing::Test {
 protected:
  UsedFakeSystem system_;
  MacLog log_;
  std::unique_ptr<Logger> logger_ = log_.makeLogger(logSubsystem, "FolderMonitor");
};

TEST_F(MacLoggerTests, everyLevelHasItsType) {
  logger_->log(LogLevel::debug, "a");
  logger_->log(LogLevel::info, "b");
  logger_->log(LogLevel::error, "c");
  EXPECT_EQ(system_->calls,
            (std::vector<std::string>{"com.kestrivane FolderMonitor 2 %{public}s a",
                                      "com.kestrivane FolderMonitor 1 %{public}s b",
                                      "com.kestrivane FolderMonitor 16 %{public}s c"}));
}

TEST_F(MacLoggerTests, aMessageIsNeverAFormat) {
  logger_->log(LogLevel::info, "100 %s %{private}@ фото.png");
  EXPECT_EQ(system_->calls.back(),
            "com.kestrivane FolderMonitor 1 %{public}s 100 %s %{private}@ фото.png");
}

TEST_F(MacLoggerTests, bytesThatAreNoTextAreReplaced) {
  logger_->log(LogLevel::info, "a\xFF.png");
  EXPECT_EQ(system_->calls.back(), "com.kestrivane FolderMonitor 1 %{public}s a\uFFFD.png");
}

}  // namespace
}  // namespace kestrivane::test

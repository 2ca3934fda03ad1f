// A log in memory. Thread-safety: any thread may log; read it when nobody logs.
// Ownership: outlives its loggers.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Logger.hpp"

namespace kestrivane::test {

struct LogEntry {
  LogLevel level;
  std::string subsystem;
  std::string category;
  std::string message;

  friend bool operator==(const LogEntry&, const LogEntry&) = default;
};

class FakeLog final : public UnifiedLog {
 public:
  std::vector<LogEntry> entries;

  std::unique_ptr<Logger> makeLogger(std::string_view subsystem,
                                     std::string_view category) override {
    return std::make_unique<Recorder>(*this, subsystem, category);
  }

  std::vector<std::string> messages(LogLevel level) const {
    std::vector<std::string> found;
    for (const LogEntry& entry : entries) {
      if (entry.level == level) found.push_back(entry.message);
    }
    return found;
  }

 private:
  class Recorder final : public Logger {
   public:
    Recorder(FakeLog& log, std::string_view subsystem, std::string_view category)
        : log_(log), subsystem_(subsystem), category_(category) {}

    void log(LogLevel level, std::string_view message) noexcept override {
      const std::lock_guard lock(log_.mutex_);
      log_.entries.push_back({level, subsystem_, category_, std::string(message)});
    }

   private:
    FakeLog& log_;
    std::string subsystem_;
    std::string category_;
  };

  std::mutex mutex_;
};

}  // namespace kestrivane::test

// The system's unified log.
//
// Thread-safety: loggers may be used from any thread. Ownership: the log outlives its loggers.
#pragma once

#include <memory>
#include <string_view>

namespace kestrivane {

/// The subsystem of every logger of this program.
inline constexpr std::string_view logSubsystem = "com.kestrivane";

enum class LogLevel { debug, info, error };

class Logger {
 public:
  Logger() = default;
  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;
  virtual ~Logger() = default;

  /// Writes one public message. Never throws; a log that cannot be written is not reported.
  virtual void log(LogLevel level, std::string_view message) noexcept = 0;
};

class UnifiedLog {
 public:
  UnifiedLog() = default;
  UnifiedLog(const UnifiedLog&) = delete;
  UnifiedLog& operator=(const UnifiedLog&) = delete;
  virtual ~UnifiedLog() = default;

  /// `category` is the name of the type that logs.
  virtual std::unique_ptr<Logger> makeLogger(std::string_view subsystem,
                                             std::string_view category) = 0;
};

}  // namespace kestrivane

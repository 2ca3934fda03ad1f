#ifndef __linux__
#error "This adapter is for Linux."
#endif

// The journal would otherwise be told this file and line for every message.
#define SD_JOURNAL_SUPPRESS_LOCATION

#include "platform/linux/system/LinuxLog.hpp"

#include <array>
#include <cstdlib>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include "platform/Unicode.hpp"
#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane {
namespace {

bool journalIsThere() {
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = "/run/systemd/journal/socket"};
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  return socket &&
         ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

int priority(LogLevel level) {
  switch (level) {
    case LogLevel::debug:
      return LOG_DEBUG;
    case LogLevel::info:
      return LOG_INFO;
    case LogLevel::error:
      return LOG_ERR;
  }
  return LOG_INFO;
}

std::string_view name(LogLevel level) {
  switch (level) {
    case LogLevel::debug:
      return "debug";
    case LogLevel::info:
      return "info";
    case LogLevel::error:
      return "error";
  }
  return "info";
}

class StandardErrorLogger final : public Logger {
 public:
  StandardErrorLogger(std::string_view category, bool isDebugging)
      : category_(category), isDebugging_(isDebugging) {}

  void log(LogLevel level, std::string_view message) noexcept override try {
    if (level == LogLevel::debug && !isDebugging_) return;
    std::string line(name(level));
    line += " " + category_ + ": ";
    line += printable(message) + '\n';
    // One call for the whole line: those of other threads do not come between.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
  } catch (...) {
    // No memory for the line: by contract it is dropped.
  }

 private:
  const std::string category_;
  const bool isDebugging_;
};

class JournalLogger final : public Logger {
 public:
  JournalLogger(std::string_view subsystem, std::string_view category, bool isDebugging)
      : subsystemField_("KESTRIVANE_SUBSYSTEM=" + std::string(subsystem)),
        categoryField_("KESTRIVANE_CATEGORY=" + std::string(category)),
        isDebugging_(isDebugging),
        fallback_(category, isDebugging) {}

  void log(LogLevel level, std::string_view message) noexcept override try {
    if (level == LogLevel::debug && !isDebugging_) return;
    const std::string messageField = "MESSAGE=" + validUTF8(message);
    const std::string priorityField = "PRIORITY=" + std::to_string(priority(level));
    const std::string identifierField = "SYSLOG_IDENTIFIER=kestrivane";
    const std::array fields{vectorOf(messageField), vectorOf(priorityField),
                            vectorOf(identifierField), vectorOf(subsystemField_),
                            vectorOf(categoryField_)};
    if (sd_journal_sendv(fields.data(), static_cast<int>(fields.size())) < 0)
      fallback_.log(level, message);
  } catch (...) {
    // No memory for the fields: by contract the message is dropped.
  }

 private:
  static iovec vectorOf(const std::string& field) {
    return {const_cast<char*>(field.data()), field.size()};
  }

  const std::string subsystemField_;
  const std::string categoryField_;
  const bool isDebugging_;
  StandardErrorLogger fallback_;
};

}  // namespace

std::unique_ptr<LinuxLog> LinuxLog::create() {
  return std::unique_ptr<LinuxLog>(
      new LinuxLog(journalIsThere(), std::getenv("KESTRIVANE_DEBUG") != nullptr));
}

std::unique_ptr<Logger> LinuxLog::makeLogger(std::string_view subsystem,
                                             std::string_view category) {
  if (hasJournal_) return std::make_unique<JournalLogger>(subsystem, category, isDebugging_);
  return std::make_unique<StandardErrorLogger>(category, isDebugging_);
}

}  // namespace kestrivane

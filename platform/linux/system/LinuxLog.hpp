// The unified log on Linux: the journal, with fields, where there is one, else standard error with
// one printable line a message. Debug messages are written only when the environment variable
// KESTRIVANE_DEBUG is set.
//
// Thread-safety: the log and its loggers may be used from any thread. Ownership: loggers own what
// they need.
#pragma once

#include <memory>

#include "platform/Logger.hpp"

namespace kestrivane {

class LinuxLog final : public UnifiedLog {
 public:
  static std::unique_ptr<LinuxLog> create();

  std::unique_ptr<Logger> makeLogger(std::string_view subsystem,
                                     std::string_view category) override;

 private:
  LinuxLog(bool hasJournal, bool isDebugging)
      : hasJournal_(hasJournal), isDebugging_(isDebugging) {}

  bool hasJournal_;
  bool isDebugging_;
};

}  // namespace kestrivane

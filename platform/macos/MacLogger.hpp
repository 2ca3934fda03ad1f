// The unified log of the system. Messages are public, as they are meant for whoever looks for the
// cause of a failed conversion.
//
// Thread-safety: loggers may be used from any thread. Ownership: the system keeps its log objects
// for the life of the process.
#pragma once

#include "platform/Logger.hpp"

namespace kestrivane {

class MacLog final : public UnifiedLog {
 public:
  std::unique_ptr<Logger> makeLogger(std::string_view subsystem,
                                     std::string_view category) override;
};

}  // namespace kestrivane

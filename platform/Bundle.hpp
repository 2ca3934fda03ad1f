// What is installed together with the program.
//
// Thread-safety: may be called from any thread. The files are looked for anew at every call.
#pragma once

#include <optional>
#include <string_view>

#include "platform/FileURL.hpp"

namespace kestrivane {

class Bundle {
 public:
  Bundle() = default;
  Bundle(const Bundle&) = delete;
  Bundle& operator=(const Bundle&) = delete;
  virtual ~Bundle() = default;

  /// The program of that name that is there for this one to run; nothing when there is none.
  virtual std::optional<FileURL> auxiliaryExecutable(std::string_view name) const = 0;

  /// The resource of that name, its extension included; nothing when there is none.
  virtual std::optional<FileURL> resource(std::string_view name) const = 0;
};

}  // namespace kestrivane

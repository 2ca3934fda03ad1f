// The application bundle that runs. Thread-safety: may be called from any thread.
#pragma once

#include "platform/Bundle.hpp"

namespace kestrivane {

class MacBundle final : public Bundle {
 public:
  std::optional<FileURL> auxiliaryExecutable(std::string_view name) const override;
  std::optional<FileURL> resource(std::string_view name) const override;
};

}  // namespace kestrivane

// Finds a film cut short when a test says so. Thread-safety: none. Ownership: owns what it notes.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/MediaInspector.hpp"
#include "platform/PlatformError.hpp"

namespace kestrivane::test {

class FakeMediaInspector final : public MediaInspector {
 public:
  bool findsCutShort = false;
  std::optional<PlatformError> failure;  ///< thrown, if any

  /// The paths that were compared: of the result and of the source.
  mutable std::vector<std::pair<std::string, std::string>> comparisons;

  bool isCutShort(const FileURL& result, const FileURL& source) const override {
    comparisons.emplace_back(result.path(), source.path());
    if (failure) throw *failure;
    return findsCutShort;
  }
};

}  // namespace kestrivane::test

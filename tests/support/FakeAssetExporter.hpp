// A media library for films that are lines of text: "film CONTENT" is one that can be exported, and
// everything else is no film.
//
// Files are those of an `InMemoryFileSystem`, which outlives it. What is written is again a line:
// "TYPE CONTENT", TYPE being mpeg4, quickTimeMovie or appleM4V. Thread-safety: none; used on the
// test's thread.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/AssetExportSession.hpp"
#include "tests/support/InMemoryFileSystem.hpp"

namespace kestrivane::test {

class FakeAssetExporter final : public AssetExporter {
 public:
  explicit FakeAssetExporter(InMemoryFileSystem& fileSystem) : fileSystem_(fileSystem) {}

  /// Makes the creation of every session fail with this description.
  std::optional<std::string> sessionFailure;
  /// Makes every export fail with this description.
  std::optional<std::string> exportFailure;

  /// What was asked for: "session PATH highestQuality", "export PATH TYPE".
  mutable std::vector<std::string> operations;

  Task<std::unique_ptr<AssetExportSession>> createSession(FileURL assetURL,
                                                          ExportPreset preset) const override;

 private:
  class Session;

  InMemoryFileSystem& fileSystem_;
};

}  // namespace kestrivane::test

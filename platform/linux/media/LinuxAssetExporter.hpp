// Exports media with the FFmpeg libraries, in this process.
//
// Thread-safety: bound to the main thread; the work runs on the queue for long work. Ownership:
// refers to the queue, which outlives it.
#pragma once

#include <memory>

#include "async/Executor.hpp"
#include "platform/AssetExportSession.hpp"

namespace kestrivane {

class LinuxAssetExporter final : public AssetExporter {
 public:
  /// Silences the libraries, which would write to standard error.
  explicit LinuxAssetExporter(Executor& longWorkQueue);

  Task<std::unique_ptr<AssetExportSession>> createSession(FileURL assetURL,
                                                          ExportPreset preset) const override;

 private:
  Executor* longWorkQueue_;
};

}  // namespace kestrivane

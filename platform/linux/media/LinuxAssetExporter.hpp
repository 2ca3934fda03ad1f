// Exports media with the FFmpeg libraries, in this process.
//
// Thread-safety: bound to the main thread; the work runs on the queues. Ownership: refers to the
// queues, which outlive it.
#pragma once

#include <functional>
#include <memory>

#include "async/Executor.hpp"
#include "platform/AssetExportSession.hpp"
#include "platform/linux/media/OpenedMedia.hpp"

namespace kestrivane {

class LinuxAssetExporter final : public AssetExporter {
 public:
  /// Opens a film; is called on the queue for long work. `openMedia`, or the one of a module.
  using Open = std::function<std::unique_ptr<OpenedMedia>(const FileURL&)>;

  /// Films that must be encoded take their turns on `encodingQueue`; all else is done on
  /// `longWorkQueue`.
  LinuxAssetExporter(Executor& longWorkQueue, Executor& encodingQueue, Open open);

  Task<std::unique_ptr<AssetExportSession>> createSession(FileURL assetURL,
                                                          ExportPreset preset) const override;

 private:
  Executor* longWorkQueue_;
  Executor* encodingQueue_;
  Open open_;
};

}  // namespace kestrivane

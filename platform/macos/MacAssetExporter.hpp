// Exports media with AVFoundation, which reads and writes on threads of its own.
//
// Thread-safety: bound to the main thread. Ownership: an export that was begun keeps what it needs.
#pragma once

#include "platform/AssetExportSession.hpp"

namespace kestrivane {

class MacAssetExporter final : public AssetExporter {
 public:
  Task<std::unique_ptr<AssetExportSession>> createSession(FileURL assetURL,
                                                          ExportPreset preset) const override;
};

}  // namespace kestrivane

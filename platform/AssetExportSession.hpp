// Exporting the sound and video of a media file into another container.
//
// Thread-safety: bound to the main thread, where the tasks resume; the reading and writing happen
// elsewhere, any number of exports at once. Ownership: a session owns what it has opened; the
// exporter outlives its sessions.
#pragma once

#include <memory>

#include "async/Task.hpp"
#include "platform/FileURL.hpp"

namespace kestrivane {

/// The containers that can be written.
enum class MediaFileType { mpeg4, quickTimeMovie, appleM4V };

enum class ExportPreset { highestQuality };

class AssetExportSession {
 public:
  AssetExportSession() = default;
  AssetExportSession(const AssetExportSession&) = delete;
  AssetExportSession& operator=(const AssetExportSession&) = delete;
  virtual ~AssetExportSession() = default;

  /// Writes the file at `destinationURL`, where nothing is yet. To be called once. Throws an error
  /// with a description for the user; what has been written of a failed export may stay behind.
  /// Cancelling the task does not interrupt the export: a conversion that was begun is finished.
  virtual Task<void> exportAsset(FileURL destinationURL, MediaFileType fileType) = 0;
};

class AssetExporter {
 public:
  AssetExporter() = default;
  AssetExporter(const AssetExporter&) = delete;
  AssetExporter& operator=(const AssetExporter&) = delete;
  virtual ~AssetExporter() = default;

  /// A session for the file at `assetURL`, which is recognised by its content, whatever its name;
  /// null when it has neither sound nor video that can be read.
  virtual Task<std::unique_ptr<AssetExportSession>> createSession(FileURL assetURL,
                                                                  ExportPreset preset) const = 0;
};

}  // namespace kestrivane

// One film written into another container: all of its tracks, its chapters and what it says about
// itself.
//
// Thread-safety: blocks the calling thread; different films are independent. Ownership: none kept.
#pragma once

#include "platform/AssetExportSession.hpp"
#include "platform/FileURL.hpp"
#include "platform/linux/media/MediaInput.hpp"

namespace kestrivane {

/// Whether a track must be encoded anew, which takes minutes and all processors. Throws
/// `PlatformError` when the export would.
bool needsEncoding(const MediaInput& input, MediaFileType fileType);

/// Reads `input` to its end and writes the file at `destination`, where nothing is. Throws
/// `PlatformError`; then nothing is left at `destination`.
void exportMedia(MediaInput& input, const FileURL& destination, MediaFileType fileType);

}  // namespace kestrivane

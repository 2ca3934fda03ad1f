// A film as the adapter hands it out: what stands between the program and the module that holds the
// media libraries.
//
// It knows nothing of coroutines, whose state a module does not share with the program. Thread-
// safety: none; may move from thread to thread, which it blocks. Ownership: owns the file that is
// read.
#pragma once

#include <memory>

#include "platform/AssetExportSession.hpp"
#include "platform/FileURL.hpp"

namespace kestrivane {

class OpenedMedia {
 public:
  OpenedMedia() = default;
  OpenedMedia(const OpenedMedia&) = delete;
  OpenedMedia& operator=(const OpenedMedia&) = delete;
  virtual ~OpenedMedia() = default;

  /// Whether `exportTo` will encode anything, which takes long.
  virtual bool needsEncoding(MediaFileType fileType) = 0;

  /// To be called once. Throws `PlatformError`; then nothing is left at `destination`.
  virtual void exportTo(const FileURL& destination, MediaFileType fileType) = 0;
};

/// Null when the file is no media file that can be read, or has neither sound nor video. Silences
/// the libraries, which would write to standard error.
std::unique_ptr<OpenedMedia> openMedia(const FileURL& url);

}  // namespace kestrivane

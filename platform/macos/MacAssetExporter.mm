#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacAssetExporter.hpp"

#include <optional>

#import <AVFoundation/AVFoundation.h>

#include "async/Continuation.hpp"
#include "platform/macos/FoundationBridge.hpp"

namespace kestrivane {
namespace {

AVFileType nameOf(MediaFileType fileType) {
  switch (fileType) {
    case MediaFileType::mpeg4:
      return AVFileTypeMPEG4;
    case MediaFileType::quickTimeMovie:
      return AVFileTypeQuickTimeMovie;
    case MediaFileType::appleM4V:
      return AVFileTypeAppleM4V;
  }
  return AVFileTypeMPEG4;
}

/// Starts the export and resumes on the task's own event loop when it has ended. Throws its error.
class [[nodiscard]] ExportAwaiter {
 public:
  explicit ExportAwaiter(AVAssetExportSession* session) : session_(session) {}
  ExportAwaiter(const ExportAwaiter&) = delete;
  ExportAwaiter& operator=(const ExportAwaiter&) = delete;
  ~ExportAwaiter() = default;

  bool await_ready() const noexcept { return false; }

  template <typename Promise>
  void await_suspend(std::coroutine_handle<Promise> task) {
    const Continuation continuation = suspended_.suspend(task, *task.promise().context.loop);
    // The block holds the session: the export goes on when the task is gone.
    AVAssetExportSession* const session = session_;
    const auto error = error_;
    [session exportAsynchronouslyWithCompletionHandler:^{
      if (session.status != AVAssetExportSessionStatusCompleted)
        error->emplace(platformError(session.error));
      continuation.resume();
    }];
  }

  void await_resume() const {
    if (*error_) throw **error_;
  }

 private:
  using Error = std::optional<PlatformError>;

  AVAssetExportSession* const session_;
  const std::shared_ptr<Error> error_ = std::make_shared<Error>();
  SuspendedCoroutine suspended_;
};

class Session final : public AssetExportSession {
 public:
  explicit Session(AVAssetExportSession* session) : session_(session) {}

  // The export that takes its URL as an argument and suspends is for Swift alone.
  Task<void> exportAsset(FileURL destinationURL, MediaFileType fileType) override {
    session_.outputURL = nsURL(destinationURL);
    session_.outputFileType = nameOf(fileType);
    co_await ExportAwaiter(session_);
  }

 private:
  AVAssetExportSession* const session_;
};

}  // namespace

Task<std::unique_ptr<AssetExportSession>> MacAssetExporter::createSession(
    FileURL assetURL, ExportPreset /*preset*/) const {
  AVURLAsset* const asset = [AVURLAsset URLAssetWithURL:nsURL(assetURL) options:nil];
  AVAssetExportSession* const session =
      [AVAssetExportSession exportSessionWithAsset:asset
                                        presetName:AVAssetExportPresetHighestQuality];
  if (session == nil) co_return nullptr;
  co_return std::make_unique<Session>(session);
}

}  // namespace kestrivane

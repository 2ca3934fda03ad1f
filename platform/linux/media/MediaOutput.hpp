// A media file that is written.
//
// Packets may come in any order of the tracks; they are written in the order of time.
// Thread-safety: none. Ownership: owns the file, which is removed again unless it is finished.
#pragma once

#include <memory>

#include "platform/AssetExportSession.hpp"
#include "platform/FileURL.hpp"
#include "platform/linux/media/MediaFile.hpp"

struct AVFormatContext;
struct AVPacket;
struct AVStream;

namespace kestrivane {

class MediaOutput {
 public:
  /// Creates the file. Throws `PlatformError`, as all operations do.
  MediaOutput(const FileURL& url, MediaFileType fileType);
  MediaOutput(const MediaOutput&) = delete;
  MediaOutput& operator=(const MediaOutput&) = delete;
  ~MediaOutput();

  MediaFileType fileType() const { return fileType_; }
  AVFormatContext& format() { return *format_; }

  /// A new track, to be described before `begin`.
  AVStream& addStream();

  /// Writes what stands before the first packet.
  void begin();

  /// Writes a packet whose stream and times are those of the track; leaves it empty.
  void write(AVPacket& packet);

  /// Writes what stands after the last packet, hands everything to the system and keeps the file.
  void finish();

 private:
  const MediaFileType fileType_;
  const std::unique_ptr<MediaFile> file_;
  AVFormatContext* format_ = nullptr;
};

}  // namespace kestrivane

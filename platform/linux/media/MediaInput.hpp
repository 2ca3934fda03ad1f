// A media file that is read: its tracks and their packets.
//
// Nothing but the file itself is ever opened: references in it to other files and addresses are
// not followed. Thread-safety: none; may move from thread to thread. Ownership: owns the file.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "platform/FileURL.hpp"
#include "platform/linux/media/MediaFile.hpp"

struct AVFormatContext;
struct AVPacket;
struct AVStream;

namespace kestrivane {

class MediaInput {
 public:
  /// Opens the file and looks at its beginning; null when it is no media file that can be read, or
  /// has neither sound nor video.
  static std::unique_ptr<MediaInput> open(const FileURL& url);

  MediaInput(const MediaInput&) = delete;
  MediaInput& operator=(const MediaInput&) = delete;
  ~MediaInput();

  const AVFormatContext& format() const { return *format_; }
  std::span<AVStream* const> streams() const;

  /// What is to be taken from every time stamp, in microseconds: where a recording begins that has
  /// no beginning of its own.
  std::int64_t startTime() const;

  /// The next packet of any track that is not to be discarded; false after the last one. Throws
  /// `PlatformError` when the file cannot be read or is damaged, cut off for instance.
  bool read(AVPacket& packet);

  /// As `read`, but takes damage and a missing end for the end. Throws `PlatformError` only when
  /// the system cannot read the file.
  bool readWhatIsThere(AVPacket& packet);

  /// Throws `PlatformError` when a part of a track that is known by now lies beyond the end of the
  /// file.
  void throwIfCutOff() const;

 private:
  explicit MediaInput(std::unique_ptr<MediaFile> file);
  bool isMovie() const;
  bool hasSoundOrVideo() const;

  const std::unique_ptr<MediaFile> file_;
  AVFormatContext* format_ = nullptr;
};

}  // namespace kestrivane

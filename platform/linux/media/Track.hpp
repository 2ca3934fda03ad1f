// One track on its way from a media file into another.
//
// Thread-safety: none. Ownership: refers to the output, which outlives it.
#pragma once

struct AVPacket;

namespace kestrivane {

class Track {
 public:
  Track() = default;
  Track(const Track&) = delete;
  Track& operator=(const Track&) = delete;
  virtual ~Track() = default;

  /// Takes the next packet of the source. Throws `PlatformError`.
  virtual void consume(AVPacket& packet) = 0;

  /// Writes what is still held back, once, after the last packet. Throws `PlatformError`.
  virtual void finish() = 0;
};

}  // namespace kestrivane

// A video track that becomes H.264.
//
// Frames keep their times, fields, colours and shape. Thread-safety: none. Ownership: owns the
// codecs; refers to the output, which outlives it.
#pragma once

#include <cstdint>

#include "platform/linux/media/Decoder.hpp"
#include "platform/linux/media/Encoder.hpp"
#include "platform/linux/media/PictureConverter.hpp"
#include "platform/linux/media/Track.hpp"

namespace kestrivane {

class EncodedVideoTrack final : public Track {
 public:
  /// Adds the track to `output`. `startTime` (microseconds) is taken from all times.
  EncodedVideoTrack(const AVStream& source, std::int64_t startTime, MediaOutput& output);

  void consume(AVPacket& packet) override;
  void finish() override;

 private:
  void encode(AVFrame& frame);

  const std::int64_t startTime_;  // in the time base of the source
  const PictureConverter::Target target_;
  Decoder decoder_;
  PictureConverter converter_;
  Encoder encoder_;
  std::int64_t lastTime_;
};

}  // namespace kestrivane

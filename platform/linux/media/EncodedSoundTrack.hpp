// A sound track that becomes AAC.
//
// Times are kept: a gap in the source becomes silence. Thread-safety: none. Ownership: owns the
// codecs; refers to the output, which outlives it.
#pragma once

#include <cstdint>

#include "platform/linux/media/Decoder.hpp"
#include "platform/linux/media/Encoder.hpp"
#include "platform/linux/media/Track.hpp"

namespace kestrivane {

class EncodedSoundTrack final : public Track {
 public:
  /// Adds the track to `output`. `startTime` (microseconds) is taken from all times.
  EncodedSoundTrack(const AVStream& source, std::int64_t startTime, MediaOutput& output);

  void consume(AVPacket& packet) override;
  void finish() override;

 private:
  void take(AVFrame& frame);
  void closeGapBefore(const AVFrame& frame);
  void queue(const AVFrame* frame);
  void encodeQueued(int smallestCount);
  Frame makeFrame(int sampleCount) const;

  const AVRational timeBase_;
  const std::int64_t startTime_;  // in the time base
  Decoder decoder_;
  Encoder encoder_;
  Resampler resampler_;
  SampleQueue samples_;
  std::int64_t nextTime_;  // of the first sample in the queue, in samples
};

}  // namespace kestrivane

// A track whose packets are written as they were read.
//
// Thread-safety: none. Ownership: refers to the source's stream and to the output, which outlive
// it.
#pragma once

#include <cstdint>

#include "platform/linux/media/MediaOutput.hpp"
#include "platform/linux/media/Track.hpp"

namespace kestrivane {

class CopiedTrack final : public Track {
 public:
  /// Adds the track to `output`. `startTime` (microseconds) is taken from all times.
  CopiedTrack(const AVStream& source, std::int64_t startTime, MediaOutput& output);

  void consume(AVPacket& packet) override;
  void finish() override {}

 private:
  void smoothTimes(AVPacket& packet);

  const AVStream& source_;
  const std::int64_t startTime_;  // in the time base of the source
  MediaOutput& output_;
  AVStream& target_;
  std::int64_t roundingState_;
};

}  // namespace kestrivane

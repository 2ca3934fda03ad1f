#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/CopiedTrack.hpp"

#include <algorithm>

#include "platform/linux/media/LibavHandles.hpp"
#include "platform/linux/media/MediaError.hpp"
#include "platform/linux/media/TrackDescription.hpp"

namespace kestrivane {
namespace {

/// The name of the kind of samples, where several fit the codec: that of the source if the
/// container knows it. HEVC is called hvc1, as the players of one vendor take no other name.
std::uint32_t sampleEntryFor(const AVCodecParameters& codec, const AVOutputFormat& container) {
  const bool isKnown = av_codec_get_id(container.codec_tag, codec.codec_tag) == codec.codec_id;
  constexpr std::uint32_t sharedSets = MKTAG('h', 'e', 'v', '1');
  if (codec.codec_id == AV_CODEC_ID_HEVC && (!isKnown || codec.codec_tag == sharedSets))
    return MKTAG('h', 'v', 'c', '1');
  return isKnown ? codec.codec_tag : 0;
}

}  // namespace

CopiedTrack::CopiedTrack(const AVStream& source, std::int64_t startTime, MediaOutput& output)
    : source_(source),
      startTime_(startTimeIn(source, startTime)),
      output_(output),
      target_(output.addStream()),
      roundingState_(AV_NOPTS_VALUE) {
  checked(avcodec_parameters_copy(target_.codecpar, source.codecpar));
  target_.codecpar->codec_tag = sampleEntryFor(*source.codecpar, *output.format().oformat);
  target_.time_base = source.time_base;
  describeTrack(target_, source, Content::copied);
}

void CopiedTrack::consume(AVPacket& packet) {
  if (packet.pts != AV_NOPTS_VALUE) packet.pts -= startTime_;
  if (packet.dts != AV_NOPTS_VALUE) packet.dts -= startTime_;
  const bool isSound = source_.codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
  const bool isSameClock = av_cmp_q(source_.time_base, target_.time_base) == 0;
  if (isSound && !isSameClock && packet.dts != AV_NOPTS_VALUE) {
    smoothTimes(packet);
  } else {
    av_packet_rescale_ts(&packet, source_.time_base, target_.time_base);
  }
  packet.stream_index = target_.index;
  packet.pos = -1;
  output_.write(packet);
}

// Times in a coarse unit, whole milliseconds for instance, would make the length of sound packets
// waver; their true length is known.
void CopiedTrack::smoothTimes(AVPacket& packet) {
  AVCodecParameters& codec = *source_.codecpar;
  int length = av_get_audio_frame_duration2(&codec, packet.size);
  if (length == 0) length = codec.frame_size;
  if (length == 0 || codec.sample_rate <= 0) {
    av_packet_rescale_ts(&packet, source_.time_base, target_.time_base);
    return;
  }
  const AVRational samples = {1, codec.sample_rate};
  packet.dts = av_rescale_delta(source_.time_base, packet.dts, samples, length, &roundingState_,
                                target_.time_base);
  packet.pts = packet.dts;
  packet.duration = av_rescale_q(length, samples, target_.time_base);
}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/EncodedSoundTrack.hpp"

#include <algorithm>
#include <utility>

#include "platform/linux/media/LibavVersions.hpp"
#include "platform/linux/media/MediaError.hpp"
#include "platform/linux/media/TrackDescription.hpp"

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace kestrivane {
namespace {

/// Bits per second: 256,000 for stereo. The encoder takes less where the format has a lower limit.
constexpr std::int64_t bitRatePerChannel = 128'000;

/// The arrangements that every player takes, by the number of channels.
AVChannelLayout layoutFor(int channels) {
  switch (channels) {
    case 1:
      return AV_CHANNEL_LAYOUT_MONO;
    case 2:
      return AV_CHANNEL_LAYOUT_STEREO;
    case 3:
      return AV_CHANNEL_LAYOUT_SURROUND;
    case 4:
      return AV_CHANNEL_LAYOUT_4POINT0;
    case 5:
      return AV_CHANNEL_LAYOUT_5POINT0_BACK;
    default:
      return AV_CHANNEL_LAYOUT_5POINT1_BACK;
  }
}

/// The highest rate of the encoder that is not above that of the source.
int sampleRateFor(const AVCodec& encoder, int sourceRate) {
  int best = 0;
  int lowest = sourceRate;
  for (const int rate : supportedSampleRates(encoder)) {
    if (rate <= sourceRate) best = std::max(best, rate);
    lowest = std::min(lowest, rate);
  }
  return best != 0 ? best : lowest;
}

CodecContext makeEncoder(const AVCodecParameters& source) {
  const AVCodec* const encoder = avcodec_find_encoder_by_name("aac");
  if (encoder == nullptr) throw mediaError(AVERROR_ENCODER_NOT_FOUND);
  CodecContext context(allocated(avcodec_alloc_context3(encoder)));
  context->sample_fmt = AV_SAMPLE_FMT_FLTP;
  context->sample_rate = sampleRateFor(*encoder, source.sample_rate);
  context->ch_layout = layoutFor(source.ch_layout.nb_channels);
  context->bit_rate = bitRatePerChannel * context->ch_layout.nb_channels;
  context->time_base = {1, context->sample_rate};
  return context;
}

}  // namespace

EncodedSoundTrack::EncodedSoundTrack(const AVStream& source, std::int64_t startTime,
                                     MediaOutput& output)
    : timeBase_(source.time_base),
      startTime_(startTimeIn(source, startTime)),
      decoder_(source),
      encoder_(makeEncoder(*source.codecpar), nullptr, output),
      resampler_(allocated(swr_alloc())),
      samples_(allocated(av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP,
                                             encoder_.context().ch_layout.nb_channels,
                                             encoder_.context().frame_size))),
      nextTime_(AV_NOPTS_VALUE) {
  describeTrack(encoder_.track(), source, Content::encoded);
}

void EncodedSoundTrack::consume(AVPacket& packet) {
  decoder_.decode(&packet, [this](AVFrame& frame) { take(frame); });
}

void EncodedSoundTrack::finish() {
  decoder_.decode(nullptr, [this](AVFrame& frame) { take(frame); });
  if (nextTime_ == AV_NOPTS_VALUE) throw mediaError(AVERROR_INVALIDDATA);
  queue(nullptr);
  encodeQueued(1);
  encoder_.encode(nullptr);
}

void EncodedSoundTrack::take(AVFrame& frame) {
  if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
    av_channel_layout_default(&frame.ch_layout, frame.ch_layout.nb_channels);
  closeGapBefore(frame);
  queue(&frame);
  encodeQueued(encoder_.context().frame_size);
}

void EncodedSoundTrack::closeGapBefore(const AVFrame& frame) {
  const int rate = encoder_.context().sample_rate;
  const std::int64_t stamp = frame.best_effort_timestamp;
  const bool isFirst = nextTime_ == AV_NOPTS_VALUE;
  if (stamp == AV_NOPTS_VALUE) {
    if (isFirst) nextTime_ = 0;
    return;
  }
  const std::int64_t time =
      av_rescale_q(stamp - startTime_, timeBase_, encoder_.context().time_base);
  if (isFirst) {
    nextTime_ = time;
    return;
  }
  std::int64_t gap =
      time - nextTime_ - av_audio_fifo_size(samples_.get()) - swr_get_delay(resampler_.get(), rate);
  if (gap < rate / 10) return;  // imprecise times are no gap
  while (gap > 0) {
    const Frame silence = makeFrame(static_cast<int>(std::min<std::int64_t>(gap, rate)));
    checked(av_samples_set_silence(silence->extended_data, 0, silence->nb_samples,
                                   silence->ch_layout.nb_channels, AV_SAMPLE_FMT_FLTP));
    checked(av_audio_fifo_write(samples_.get(), reinterpret_cast<void**>(silence->extended_data),
                                silence->nb_samples));
    gap -= silence->nb_samples;
    encodeQueued(encoder_.context().frame_size);
  }
}

// Without a frame: what the resampler still holds.
void EncodedSoundTrack::queue(const AVFrame* frame) {
  Frame resampled(allocated(av_frame_alloc()));
  resampled->format = AV_SAMPLE_FMT_FLTP;
  resampled->sample_rate = encoder_.context().sample_rate;
  checked(av_channel_layout_copy(&resampled->ch_layout, &encoder_.context().ch_layout));
  checked(swr_convert_frame(resampler_.get(), resampled.get(), frame));
  checked(av_audio_fifo_write(samples_.get(), reinterpret_cast<void**>(resampled->extended_data),
                              resampled->nb_samples));
}

void EncodedSoundTrack::encodeQueued(int smallestCount) {
  while (av_audio_fifo_size(samples_.get()) >= smallestCount) {
    const Frame frame =
        makeFrame(std::min(av_audio_fifo_size(samples_.get()), encoder_.context().frame_size));
    checked(av_audio_fifo_read(samples_.get(), reinterpret_cast<void**>(frame->extended_data),
                               frame->nb_samples));
    frame->pts = nextTime_;
    nextTime_ += frame->nb_samples;
    encoder_.encode(frame.get());
  }
}

Frame EncodedSoundTrack::makeFrame(int sampleCount) const {
  Frame frame(allocated(av_frame_alloc()));
  frame->format = AV_SAMPLE_FMT_FLTP;
  frame->sample_rate = encoder_.context().sample_rate;
  frame->nb_samples = sampleCount;
  checked(av_channel_layout_copy(&frame->ch_layout, &encoder_.context().ch_layout));
  checked(av_frame_get_buffer(frame.get(), 0));
  return frame;
}

}  // namespace kestrivane

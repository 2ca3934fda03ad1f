#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/Encoder.hpp"

#include <cerrno>
#include <utility>

#include "platform/linux/media/LibavVersions.hpp"
#include "platform/linux/media/MediaError.hpp"

namespace kestrivane {

Encoder::Encoder(CodecContext context, AVDictionary* options, MediaOutput& output)
    : context_(std::move(context)),
      output_(output),
      track_(output.addStream()),
      packet_(allocated(av_packet_alloc())) {
  if ((output.format().oformat->flags & AVFMT_GLOBALHEADER) != 0)
    context_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  const int result = avcodec_open2(context_.get(), context_->codec, &options);
  av_dict_free(&options);
  checked(result);
  checked(avcodec_parameters_from_context(track_.codecpar, context_.get()));
  track_.time_base = context_->time_base;
}

void Encoder::encode(const AVFrame* frame) {
  if (frame != nullptr && frame->*frameDuration > 0) durations_[frame->pts] = frame->*frameDuration;
  checked(avcodec_send_frame(context_.get(), frame));
  while (receive()) {
    av_packet_rescale_ts(packet_.get(), context_->time_base, track_.time_base);
    packet_->stream_index = track_.index;
    output_.write(*packet_);
  }
}

bool Encoder::receive() {
  const int result = avcodec_receive_packet(context_.get(), packet_.get());
  if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return false;
  checked(result);
  if (auto duration = durations_.extract(packet_->pts); duration && packet_->duration == 0)
    packet_->duration = duration.mapped();
  return true;
}

}  // namespace kestrivane

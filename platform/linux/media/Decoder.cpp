#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/Decoder.hpp"

#include <cerrno>

namespace kestrivane {

Decoder::Decoder(const AVStream& source) : frame_(allocated(av_frame_alloc())) {
  const AVCodec* const codec = avcodec_find_decoder(source.codecpar->codec_id);
  if (codec == nullptr) throw mediaError(AVERROR_DECODER_NOT_FOUND);
  context_.reset(allocated(avcodec_alloc_context3(codec)));
  checked(avcodec_parameters_to_context(context_.get(), source.codecpar));
  context_->pkt_timebase = source.time_base;
  context_->framerate = source.avg_frame_rate;
  context_->thread_count = 0;  // as many as there are processors
  context_->err_recognition |= AV_EF_EXPLODE;
  checked(avcodec_open2(context_.get(), codec, nullptr));
}

bool Decoder::receive() {
  const int result = avcodec_receive_frame(context_.get(), frame_.get());
  if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return false;
  checked(result);
  if (frame_->decode_error_flags != 0 || (frame_->flags & AV_FRAME_FLAG_CORRUPT) != 0)
    throw mediaError(AVERROR_INVALIDDATA);
  return true;
}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/PictureConverter.hpp"

#include <array>

#include "platform/linux/media/MediaError.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace kestrivane {
namespace {

constexpr int scalingFlags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT;

bool isRGB(AVPixelFormat format) {
  const AVPixFmtDescriptor* const description = av_pix_fmt_desc_get(format);
  return description != nullptr && (description->flags & AV_PIX_FMT_FLAG_RGB) != 0;
}

}  // namespace

PictureConverter::PictureConverter(const Target& target)
    : target_(target), frame_(allocated(av_frame_alloc())) {
  frame_->width = target.width;
  frame_->height = target.height;
  frame_->format = target.format;
  checked(av_frame_get_buffer(frame_.get(), 0));
}

const AVFrame& PictureConverter::convert(const AVFrame& source) {
  checked(av_frame_make_writable(frame_.get()));
  // Each field by itself, or the colours of two moments would be mixed.
  const bool isInterlaced =
      source.interlaced_frame != 0 && source.height % 4 == 0 && source.height == target_.height;
  const int fields = isInterlaced ? 2 : 1;
  prepareScaler(source, fields);
  for (int field = 0; field < fields; ++field)
    scale(source, field, fields);
  frame_->pts = source.pts;
  frame_->pkt_duration = source.pkt_duration;
  frame_->interlaced_frame = source.interlaced_frame;
  frame_->top_field_first = source.top_field_first;
  return *frame_;
}

void PictureConverter::scale(const AVFrame& source, int field, int fields) {
  std::array<const std::uint8_t*, 4> from{};
  std::array<int, 4> fromStride{};
  std::array<std::uint8_t*, 4> to{};
  std::array<int, 4> toStride{};
  for (std::size_t plane = 0; plane < 4; ++plane) {
    fromStride[plane] = source.linesize[plane] * fields;
    toStride[plane] = frame_->linesize[plane] * fields;
    if (source.data[plane] != nullptr)
      from[plane] = source.data[plane] + field * source.linesize[plane];
    if (frame_->data[plane] != nullptr)
      to[plane] = frame_->data[plane] + field * frame_->linesize[plane];
  }
  checked(sws_scale(scaler_.get(), from.data(), fromStride.data(), 0, source.height / fields,
                    to.data(), toStride.data()));
}

void PictureConverter::prepareScaler(const AVFrame& source, int fields) {
  const auto format = static_cast<AVPixelFormat>(source.format);
  SwsContext* const former = scaler_.get();
  scaler_.reset(sws_getCachedContext(scaler_.release(), source.width, source.height / fields,
                                     format, target_.width, target_.height / fields, target_.format,
                                     scalingFlags, nullptr, nullptr, nullptr));
  if (!scaler_) throw mediaError(AVERROR(EINVAL));
  if (scaler_.get() == former) return;
  const int* const matrix = sws_getCoefficients(target_.matrix);
  const int isFullRange = target_.range == AVCOL_RANGE_JPEG ? 1 : 0;
  sws_setColorspaceDetails(scaler_.get(), matrix, isRGB(format) ? 1 : isFullRange, matrix,
                           isFullRange, 0, 1 << 16, 1 << 16);
}

}  // namespace kestrivane

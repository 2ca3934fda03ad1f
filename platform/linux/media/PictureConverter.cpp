#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/PictureConverter.hpp"

#include <cstdint>

#include "platform/linux/media/LibavVersions.hpp"
#include "platform/linux/media/MediaError.hpp"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace kestrivane {
namespace {

constexpr int scalingFlags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT;

bool isRGB(AVPixelFormat format) {
  const AVPixFmtDescriptor* const description = av_pix_fmt_desc_get(format);
  return description != nullptr && (description->flags & AV_PIX_FMT_FLAG_RGB) != 0;
}

/// The lines of one of so many fields, in the memory of the whole frame.
Frame fieldOf(const AVFrame& frame, int field, int fields) {
  Frame part(allocated(av_frame_clone(&frame)));
  part->height /= fields;
  for (std::size_t plane = 0; plane < 4 && part->data[plane] != nullptr; ++plane) {
    part->data[plane] += field * part->linesize[plane];
    part->linesize[plane] *= fields;
  }
  return part;
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
  const bool hasFields =
      isInterlaced(source) && source.height % 4 == 0 && source.height == target_.height;
  const int fields = hasFields ? 2 : 1;
  prepareScaler({source.width, source.height / fields, static_cast<AVPixelFormat>(source.format)},
                fields);
  for (int field = 0; field < fields; ++field) {
    checked(sws_scale_frame(scaler_.get(), fieldOf(*frame_, field, fields).get(),
                            fieldOf(source, field, fields).get()));
  }
  frame_->pts = source.pts;
  frame_.get()->*frameDuration = source.*frameDuration;
  copyFieldOrder(*frame_, source);
  return *frame_;
}

void PictureConverter::prepareScaler(const Layout& source, int fields) {
  if (scaler_ && source == layout_) return;
  scaler_.reset(allocated(sws_alloc_context()));
  const auto set = [this](const char* option, std::int64_t value) {
    checked(av_opt_set_int(scaler_.get(), option, value, 0));
  };
  set("srcw", source.width);
  set("srch", source.height);
  set("src_format", source.format);
  set("dstw", target_.width);
  set("dsth", target_.height / fields);
  set("dst_format", target_.format);
  set("sws_flags", scalingFlags);
  set("threads", 0);  // as many as there are processors
  checked(sws_init_context(scaler_.get(), nullptr, nullptr));
  const int* const matrix = sws_getCoefficients(target_.matrix);
  const int isFullRange = target_.range == AVCOL_RANGE_JPEG ? 1 : 0;
  sws_setColorspaceDetails(scaler_.get(), matrix, isRGB(source.format) ? 1 : isFullRange, matrix,
                           isFullRange, 0, 1 << 16, 1 << 16);
  layout_ = source;
}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/MediaOutput.hpp"

#include <utility>

#include "platform/linux/media/LibavHandles.hpp"
#include "platform/linux/media/MediaError.hpp"

namespace kestrivane {

MediaOutput::MediaOutput(const FileURL& url, MediaFileType fileType)
    : fileType_(fileType), file_(MediaFile::create(url)) {
  const char* const muxer = fileType == MediaFileType::quickTimeMovie ? "mov" : "mp4";
  checked(avformat_alloc_output_context2(&format_, nullptr, muxer, nullptr));
  format_->pb = file_->context();
  // Neither the writer's name nor its version.
  format_->flags |= AVFMT_FLAG_BITEXACT;
  // Small packets would otherwise be handed to the system one by one.
  format_->flush_packets = 0;
  // What is written by agreement only, not by the standard: Dolby Vision, spherical video.
  format_->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
}

MediaOutput::~MediaOutput() {
  avformat_free_context(format_);
}

AVStream& MediaOutput::addStream() {
  return *allocated(avformat_new_stream(format_, nullptr));
}

void MediaOutput::begin() {
  AVDictionary* options = nullptr;
  if (fileType_ == MediaFileType::appleM4V) av_dict_set(&options, "brand", "M4V ", 0);
  const int result = avformat_write_header(format_, &options);
  av_dict_free(&options);
  checked(result);
}

void MediaOutput::write(AVPacket& packet) {
  checked(av_interleaved_write_frame(format_, &packet));
}

void MediaOutput::finish() {
  checked(av_write_trailer(format_));
  avio_flush(format_->pb);
  checked(format_->pb->error);
  file_->keep();
}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/TrackDescription.hpp"

#include "platform/linux/media/LibavVersions.hpp"
#include "platform/linux/media/MediaError.hpp"

namespace kestrivane {
namespace {

/// Whether it holds whatever encoder makes the bytes.
bool describesThePicture(AVPacketSideDataType type) {
  switch (type) {
    case AV_PKT_DATA_DISPLAYMATRIX:
    case AV_PKT_DATA_STEREO3D:
    case AV_PKT_DATA_SPHERICAL:
    case AV_PKT_DATA_MASTERING_DISPLAY_METADATA:
    case AV_PKT_DATA_CONTENT_LIGHT_LEVEL:
      return true;
    default:
      return false;
  }
}

}  // namespace

void describeTrack(AVStream& target, const AVStream& source, Content content) {
  target.avg_frame_rate = source.avg_frame_rate;
  target.r_frame_rate = source.r_frame_rate;
  target.sample_aspect_ratio = source.sample_aspect_ratio;
  target.disposition = source.disposition;
  checked(av_dict_copy(&target.metadata, source.metadata, 0));
  if (content == Content::encoded) {
    for (const char* const nameOfTheFormerEncoder : {"encoder", "vendor_id"})
      av_dict_set(&target.metadata, nameOfTheFormerEncoder, nullptr, 0);
  }
  for (const AVPacketSideData& data : trackSideData(source)) {
    if (content == Content::copied || describesThePicture(data.type)) addTrackSideData(target, data);
  }
}

std::int64_t startTimeIn(const AVStream& stream, std::int64_t startTime) {
  return av_rescale_q(startTime, AV_TIME_BASE_Q, stream.time_base);
}

}  // namespace kestrivane

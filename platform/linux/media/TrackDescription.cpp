#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/TrackDescription.hpp"

#include <cstring>

#include "platform/linux/media/LibavHandles.hpp"
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
  for (int i = 0; i < source.nb_side_data; ++i) {
    const AVPacketSideData& data = source.side_data[i];
    if (content == Content::encoded && !describesThePicture(data.type)) continue;
    std::uint8_t* const copy = allocated(av_stream_new_side_data(&target, data.type, data.size));
    std::memcpy(copy, data.data, data.size);
  }
}

std::int64_t startTimeIn(const AVStream& stream, std::int64_t startTime) {
  return av_rescale_q(startTime, AV_TIME_BASE_Q, stream.time_base);
}

}  // namespace kestrivane

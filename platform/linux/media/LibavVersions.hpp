// What differs between the versions of the FFmpeg libraries that are supported: 5.1 (Debian 12) to
// 7.1 (Debian 13). Ubuntu 24.04 has 6.1, 24.10 has 7.0; those are not tried, only provided for.
//
// Thread-safety: functions without state. Ownership: none.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>

#include "platform/linux/media/LibavHandles.hpp"
#include "platform/linux/media/MediaError.hpp"

namespace kestrivane {

/// What the writer of an `AVIOContext` is handed: constant since libavformat 61 (FFmpeg 7.0).
#if LIBAVFORMAT_VERSION_MAJOR >= 61
using WrittenBytes = const std::uint8_t;
#else
using WrittenBytes = std::uint8_t;
#endif

/// How long a frame lasts, in the time base of its stream; 0 where that is not known. The field has
/// this name since libavutil 57.30 (FFmpeg 6.0), the former one went with 59 (FFmpeg 7.0).
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(57, 30, 100)
inline constexpr auto frameDuration = &AVFrame::duration;
#else
inline constexpr auto frameDuration = &AVFrame::pkt_duration;
#endif

/// Whether the two fields of a frame are of different moments. Flags since libavutil 58.7 (FFmpeg
/// 6.1).
inline bool isInterlaced(const AVFrame& frame) {
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(58, 7, 100)
  return (frame.flags & AV_FRAME_FLAG_INTERLACED) != 0;
#else
  return frame.interlaced_frame != 0;
#endif
}

/// Gives `to` the fields of `from`: whether there are two, and which of them is shown first.
inline void copyFieldOrder(AVFrame& to, const AVFrame& from) {
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(58, 7, 100)
  constexpr int fields = AV_FRAME_FLAG_INTERLACED | AV_FRAME_FLAG_TOP_FIELD_FIRST;
  to.flags = (to.flags & ~fields) | (from.flags & fields);
#else
  to.interlaced_frame = from.interlaced_frame;
  to.top_field_first = from.top_field_first;
#endif
}

/// The sample rates that an encoder takes, in hertz; none if it takes every one. Asked for by a
/// function since libavcodec 61.13 (FFmpeg 7.1).
inline std::span<const int> supportedSampleRates(const AVCodec& encoder) {
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
  const void* rates = nullptr;
  int count = 0;
  checked(avcodec_get_supported_config(nullptr, &encoder, AV_CODEC_CONFIG_SAMPLE_RATE, 0, &rates,
                                       &count));
  return {static_cast<const int*>(rates), static_cast<std::size_t>(count)};
#else
  const int* const rates = encoder.supported_samplerates;
  std::size_t count = 0;
  while (rates != nullptr && rates[count] != 0)
    ++count;
  return {rates, count};
#endif
}

/// What is said of a whole track beside its codec, such as its rotation. It belongs to the codec's
/// parameters, and is copied with these, since libavcodec 60.30 (FFmpeg 6.1).
inline std::span<const AVPacketSideData> trackSideData(const AVStream& track) {
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(60, 30, 100)
  return {track.codecpar->coded_side_data,
          static_cast<std::size_t>(track.codecpar->nb_coded_side_data)};
#else
  return {track.side_data, static_cast<std::size_t>(track.nb_side_data)};
#endif
}

/// Says the same of `track`, in place of what it says of that kind so far. Throws `PlatformError`
/// when there is no memory.
inline void addTrackSideData(AVStream& track, const AVPacketSideData& data) {
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(60, 30, 100)
  const AVPacketSideData* const copy = allocated(
      av_packet_side_data_new(&track.codecpar->coded_side_data, &track.codecpar->nb_coded_side_data,
                              data.type, data.size, 0));
  std::memcpy(copy->data, data.data, data.size);
#else
  std::memcpy(allocated(av_stream_new_side_data(&track, data.type, data.size)), data.data,
              data.size);
#endif
}

}  // namespace kestrivane

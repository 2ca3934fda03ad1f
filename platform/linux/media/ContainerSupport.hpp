// What the players of each container take, which is less than what can be stored in it. A track of
// such a codec is copied as it is.
//
// Thread-safety: constants and pure functions.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/AssetExportSession.hpp"
#include "platform/linux/media/LibavHandles.hpp"

namespace kestrivane {

struct CodecSupport {
  AVCodecID codec;
  bool inMPEG4;
  bool inQuickTimeMovie;
  bool inAppleM4V;
};

/// MP4: what is registered for it and played by browsers, telephones and television sets. M4V: what
/// the players of its inventor have always taken. QuickTime movie: those of its inventor and of
/// editing programs, uncompressed sound among them.
inline constexpr std::array codecSupport = {
    CodecSupport{AV_CODEC_ID_H264, true, true, true},
    CodecSupport{AV_CODEC_ID_HEVC, true, true, true},
    CodecSupport{AV_CODEC_ID_MPEG4, true, true, true},
    CodecSupport{AV_CODEC_ID_AV1, true, false, false},
    CodecSupport{AV_CODEC_ID_VP9, true, false, false},
    CodecSupport{AV_CODEC_ID_PRORES, false, true, false},
    CodecSupport{AV_CODEC_ID_MJPEG, false, true, false},
    CodecSupport{AV_CODEC_ID_DVVIDEO, false, true, false},
    CodecSupport{AV_CODEC_ID_MPEG2VIDEO, false, true, false},
    CodecSupport{AV_CODEC_ID_DNXHD, false, true, false},
    CodecSupport{AV_CODEC_ID_QTRLE, false, true, false},
    CodecSupport{AV_CODEC_ID_PNG, false, true, false},

    CodecSupport{AV_CODEC_ID_AAC, true, true, true},
    CodecSupport{AV_CODEC_ID_ALAC, true, true, true},
    CodecSupport{AV_CODEC_ID_AC3, true, true, true},
    CodecSupport{AV_CODEC_ID_EAC3, true, true, true},
    CodecSupport{AV_CODEC_ID_MP3, true, true, false},
    CodecSupport{AV_CODEC_ID_OPUS, true, false, false},
    CodecSupport{AV_CODEC_ID_FLAC, true, false, false},
    CodecSupport{AV_CODEC_ID_PCM_S16LE, false, true, false},
    CodecSupport{AV_CODEC_ID_PCM_S16BE, false, true, false},
    CodecSupport{AV_CODEC_ID_PCM_S24LE, false, true, false},
    CodecSupport{AV_CODEC_ID_PCM_S24BE, false, true, false},
    CodecSupport{AV_CODEC_ID_PCM_S32LE, false, true, false},
    CodecSupport{AV_CODEC_ID_PCM_S32BE, false, true, false},
    CodecSupport{AV_CODEC_ID_PCM_F32LE, false, true, false},
    CodecSupport{AV_CODEC_ID_PCM_F32BE, false, true, false},

    CodecSupport{AV_CODEC_ID_MOV_TEXT, true, true, true},
    CodecSupport{AV_CODEC_ID_EIA_608, false, true, false},
};

constexpr bool canHold(MediaFileType fileType, AVCodecID codec) {
  const auto* const support = std::ranges::find(codecSupport, codec, &CodecSupport::codec);
  if (support == codecSupport.end()) return false;
  switch (fileType) {
    case MediaFileType::mpeg4:
      return support->inMPEG4;
    case MediaFileType::quickTimeMovie:
      return support->inQuickTimeMovie;
    case MediaFileType::appleM4V:
      return support->inAppleM4V;
  }
  return false;
}

}  // namespace kestrivane

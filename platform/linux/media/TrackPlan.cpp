#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/TrackPlan.hpp"

#include <algorithm>

#include "platform/linux/media/ContainerSupport.hpp"
#include "platform/linux/media/LibavHandles.hpp"
#include "platform/linux/media/MediaError.hpp"

namespace kestrivane {
namespace {

bool isCover(const AVStream& track) {
  return (track.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
}

Treatment treatmentOfCover(const AVStream& track) {
  const bool isTimed = (track.disposition & AV_DISPOSITION_TIMED_THUMBNAILS) != 0;
  const AVCodecID codec = track.codecpar->codec_id;
  const bool isHeld = codec == AV_CODEC_ID_MJPEG || codec == AV_CODEC_ID_PNG;
  return isHeld && !isTimed ? Treatment::copy : Treatment::leaveOut;
}

/// Whether an edit list shows several parts of the track, with frames between them that are decoded
/// but not shown. A copy can hide frames at the beginning only.
bool isCutInside(AVStream& track) {
  bool isShown = false;
  const int count = avformat_index_get_entries_count(&track);
  for (int i = 0; i < count; ++i) {
    const AVIndexEntry& entry = *avformat_index_get_entry(&track, i);
    const bool isHidden = (entry.flags & AVINDEX_DISCARD_FRAME) != 0;
    // Hidden frames begin with a key frame. Others only follow the first part in the order of
    // decoding.
    if (isHidden && isShown && (entry.flags & AVINDEX_KEYFRAME) != 0) return true;
    isShown = isShown || !isHidden;
  }
  return false;
}

Treatment treatmentOf(AVStream& track, MediaFileType fileType) {
  const AVCodecParameters& codec = *track.codecpar;
  if (track.discard == AVDISCARD_ALL) return Treatment::leaveOut;  // belongs to another track
  if (isCover(track)) return treatmentOfCover(track);
  const bool isHeld = canHold(fileType, codec.codec_id);
  switch (codec.codec_type) {
    case AVMEDIA_TYPE_VIDEO:
    case AVMEDIA_TYPE_AUDIO:
      if (isHeld && !isCutInside(track)) return Treatment::copy;
      return avcodec_find_decoder(codec.codec_id) != nullptr ? Treatment::encode
                                                             : Treatment::leaveOut;
    case AVMEDIA_TYPE_SUBTITLE:
      return isHeld ? Treatment::copy : Treatment::leaveOut;
    default:
      return Treatment::leaveOut;
  }
}

/// Whether the film has tracks of this kind and none of them is kept.
bool losesAll(AVMediaType kind, std::span<AVStream* const> tracks,
              std::span<const Treatment> treatments) {
  bool hasAny = false;
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    if (tracks[i]->codecpar->codec_type != kind || isCover(*tracks[i])) continue;
    if (treatments[i] != Treatment::leaveOut) return false;
    hasAny = true;
  }
  return hasAny;
}

}  // namespace

std::vector<Treatment> planTracks(std::span<AVStream* const> tracks, MediaFileType fileType) {
  std::vector<Treatment> treatments;
  for (AVStream* const track : tracks)
    treatments.push_back(treatmentOf(*track, fileType));
  if (losesAll(AVMEDIA_TYPE_VIDEO, tracks, treatments) ||
      losesAll(AVMEDIA_TYPE_AUDIO, tracks, treatments))
    throw mediaError(AVERROR_DECODER_NOT_FOUND);
  return treatments;
}

}  // namespace kestrivane

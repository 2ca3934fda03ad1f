#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/MediaExport.hpp"

#include <algorithm>
#include <memory>
#include <vector>

#include <sys/resource.h>

#include "platform/linux/media/CopiedTrack.hpp"
#include "platform/linux/media/EncodedSoundTrack.hpp"
#include "platform/linux/media/EncodedVideoTrack.hpp"
#include "platform/linux/media/LibavHandles.hpp"
#include "platform/linux/media/MediaError.hpp"
#include "platform/linux/media/MediaOutput.hpp"
#include "platform/linux/media/TrackPlan.hpp"

namespace kestrivane {
namespace {

/// By the number of the source's track; null for one that is left out.
using Tracks = std::vector<std::unique_ptr<Track>>;

std::unique_ptr<Track> makeTrack(const AVStream& source, Treatment treatment,
                                 std::int64_t startTime, MediaOutput& output) {
  if (treatment == Treatment::leaveOut) return nullptr;
  if (treatment == Treatment::copy) return std::make_unique<CopiedTrack>(source, startTime, output);
  if (source.codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
    return std::make_unique<EncodedVideoTrack>(source, startTime, output);
  return std::make_unique<EncodedSoundTrack>(source, startTime, output);
}

bool hasEncoding(const std::vector<Treatment>& treatments) {
  return std::ranges::find(treatments, Treatment::encode) != treatments.end();
}

// Minutes of encoding must not make a picture wait that is converted meanwhile. The codecs' threads
// inherit it from this one, which does nothing but such work until it ends.
void yieldToShortWork() {
  constexpr int niceness = 5;
  ::setpriority(PRIO_PROCESS, 0, niceness);  // of this thread alone
}

Tracks makeTracks(const MediaInput& input, MediaOutput& output) {
  const std::vector<Treatment> treatments = planTracks(input.streams(), output.fileType());
  if (hasEncoding(treatments)) yieldToShortWork();
  Tracks tracks;
  for (std::size_t i = 0; i < treatments.size(); ++i) {
    AVStream& source = *input.streams()[i];
    tracks.push_back(makeTrack(source, treatments[i], input.startTime(), output));
    if (!tracks.back()) source.discard = AVDISCARD_ALL;
  }
  return tracks;
}

void copyDescription(const MediaInput& input, AVFormatContext& target) {
  checked(av_dict_copy(&target.metadata, input.format().metadata, 0));
  for (const char* const ofTheContainer :
       {"major_brand", "minor_version", "compatible_brands", "encoder"})
    av_dict_set(&target.metadata, ofTheContainer, nullptr, 0);
}

void copyChapters(const MediaInput& input, AVFormatContext& target) {
  const AVFormatContext& source = input.format();
  for (unsigned i = 0; i < source.nb_chapters; ++i) {
    const AVChapter& from = *source.chapters[i];
    auto* const to = static_cast<AVChapter*>(allocated(av_mallocz(sizeof(AVChapter))));
    checked(
        av_dynarray_add_nofree(&target.chapters, reinterpret_cast<int*>(&target.nb_chapters), to));
    const std::int64_t start = av_rescale_q(input.startTime(), AV_TIME_BASE_Q, from.time_base);
    to->id = from.id;
    to->time_base = from.time_base;
    to->start = from.start - start;
    to->end = from.end - start;
    checked(av_dict_copy(&to->metadata, from.metadata, 0));
  }
}

void convey(MediaInput& input, const Tracks& tracks) {
  const Packet packet(allocated(av_packet_alloc()));
  while (input.read(*packet)) {
    const auto number = static_cast<std::size_t>(packet->stream_index);
    // A track that begins in the middle of the file was not planned for.
    if (number < tracks.size() && tracks[number]) tracks[number]->consume(*packet);
    av_packet_unref(packet.get());
  }
  for (const auto& track : tracks) {
    if (track) track->finish();
  }
}

}  // namespace

bool needsEncoding(const MediaInput& input, MediaFileType fileType) {
  return hasEncoding(planTracks(input.streams(), fileType));
}

void exportMedia(MediaInput& input, const FileURL& destination, MediaFileType fileType) {
  input.throwIfCutOff();
  MediaOutput output(destination, fileType);
  const Tracks tracks = makeTracks(input, output);
  copyDescription(input, output.format());
  copyChapters(input, output.format());
  output.begin();
  convey(input, tracks);
  output.finish();
}

}  // namespace kestrivane

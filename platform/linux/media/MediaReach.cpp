#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/MediaReach.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "platform/Unicode.hpp"
#include "platform/linux/media/LibavHandles.hpp"
#include "platform/linux/media/MediaError.hpp"
#include "platform/linux/media/MediaInput.hpp"

namespace kestrivane {
namespace {

/// What a conversion may lose at the end: what fills up the last packet of sound, a frame that
/// falls between two of another rate.
constexpr double toleratedSeconds = 1;
constexpr double toleratedFrames = 2;

/// No pause in a recording: the clock was set anew.
constexpr double longestPause = 10;

bool isKind(const AVStream& stream, AVMediaType kind) {
  return stream.codecpar->codec_type == kind &&
         (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
}

/// One track up to the beginning of its last packet. How long that one lasts is guessed in many
/// formats.
class TrackReach {
 public:
  explicit TrackReach(const AVStream& stream) : stream_(&stream) {}

  void add(const AVPacket& packet) {
    const std::int64_t stamp = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
    if (stamp == AV_NOPTS_VALUE || (packet.flags & AV_PKT_FLAG_DISCARD) != 0) return;
    const double time = secondsOf(stamp);
    const double decodingTime = packet.dts != AV_NOPTS_VALUE ? secondsOf(packet.dts) : time;
    if (count_ == 0) {
      first_ = last_ = time;
    } else {
      content_ += contentUntil(decodingTime);
    }
    first_ = std::min(first_, time);
    last_ = std::max(last_, time);
    decodingTime_ = decodingTime;
    lengthOfLast_ = lengthOf(packet);
    ++count_;
  }

  bool isEmpty() const { return count_ == 0; }

  /// Seconds that must be found in a conversion. A format without times closes the gaps.
  double least() const { return std::min(last_ - first_, content_); }

  /// Seconds that may be found in a conversion that kept the times.
  double most() const { return std::max(last_, last_ - first_); }

  /// Seconds by which a conversion may be shorter.
  double tolerance() const {
    if (count_ < 2) return toleratedSeconds;
    return std::max(toleratedSeconds, toleratedFrames * least() / (count_ - 1));
  }

 private:
  double secondsOf(std::int64_t units) const {
    return static_cast<double>(units) * av_q2d(stream_->time_base);
  }

  double contentUntil(double decodingTime) const {
    const double step = decodingTime - decodingTime_;
    if (step < 0 || step > longestPause) return 0;
    return isKind(*stream_, AVMEDIA_TYPE_AUDIO) ? std::min(step, lengthOfLast_) : step;
  }

  /// Of a packet of sound. What the container says of it may hold a pause too.
  double lengthOf(const AVPacket& packet) const {
    AVCodecParameters& codec = *stream_->codecpar;
    const double said = secondsOf(packet.duration);
    const int samples = av_get_audio_frame_duration2(&codec, packet.size);
    if (samples <= 0 || codec.sample_rate <= 0) return said;
    return std::min(said, static_cast<double>(samples) / codec.sample_rate);
  }

  const AVStream* stream_;
  int count_ = 0;
  double first_ = 0;
  double last_ = 0;
  double content_ = 0;
  double decodingTime_ = 0;
  double lengthOfLast_ = 0;
};

/// The tracks of this kind, read as far as they can be: damage is no failure.
std::vector<TrackReach> reachesOf(AVMediaType kind, MediaInput& input) {
  std::vector<TrackReach> reaches;
  std::map<int, std::size_t> places;
  for (AVStream* const stream : input.streams()) {
    stream->discard = isKind(*stream, kind) ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    if (stream->discard == AVDISCARD_ALL) continue;
    places[stream->index] = reaches.size();
    reaches.emplace_back(*stream);
  }
  const Packet packet(allocated(av_packet_alloc()));
  while (!reaches.empty() && input.readWhatIsThere(*packet)) {
    const auto place = places.find(packet->stream_index);
    if (place != places.end()) reaches[place->second].add(*packet);
    av_packet_unref(packet.get());
  }
  return reaches;
}

/// Whatever else may be missing, a film with one of these names has a beginning that tells what it
/// is, and what must stand at its end.
bool isAlwaysKnown(const FileURL& url) {
  constexpr std::array<std::string_view, 5> extensions = {"mp4", "mov", "m4v", "webm", "mkv"};
  return std::ranges::find(extensions, lowercased(url.pathExtension())) != extensions.end();
}

/// Of several tracks any may have been chosen: in the source the one counts that is shortest, in
/// the result the one that is longest.
bool isCutShort(AVMediaType kind, const FileURL& result, const FileURL& source) {
  const auto film = MediaInput::open(source);
  if (!film) return false;
  const auto made = MediaInput::open(result);
  if (!made) return isAlwaysKnown(result);
  const std::vector<TrackReach> found = reachesOf(kind, *made);
  if (found.empty()) return false;
  std::vector<TrackReach> expected = reachesOf(kind, *film);
  std::erase_if(expected, [](const TrackReach& track) { return track.isEmpty(); });
  if (expected.empty()) return false;
  const double most = std::ranges::max(found, {}, &TrackReach::most).most();
  const TrackReach shortest = std::ranges::min(expected, {}, &TrackReach::least);
  return most < shortest.least() - shortest.tolerance();
}

}  // namespace

bool isCutShort(const FileURL& result, const FileURL& source) {
  av_log_set_level(AV_LOG_QUIET);
  return isCutShort(AVMEDIA_TYPE_AUDIO, result, source) ||
         isCutShort(AVMEDIA_TYPE_VIDEO, result, source);
}

}  // namespace kestrivane

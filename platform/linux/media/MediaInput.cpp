#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/MediaInput.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

#include "platform/PlatformError.hpp"
#include "platform/linux/media/LibavHandles.hpp"
#include "platform/linux/media/MatroskaExtent.hpp"
#include "platform/linux/media/MediaError.hpp"

namespace kestrivane {
namespace {

constexpr std::string_view movieFormat = "mov,mp4,m4a,3gp,3g2,mj2";

/// Containers that hold all of their content. Lists of other files, single pictures, subtitles and
/// text are not among them.
constexpr const char* containers =
    "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,avi,asf,flv,mpeg,mpegts,ogg,wav,w64,aiff,caf,flac,mp3,"
    "mxf,dv";

int refuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
  return AVERROR(EACCES);
}

/// Where the file says that it ends; 0 if it does not.
std::uint64_t declaredExtent(const MediaFile& file) {
  std::array<std::uint8_t, 4096> bytes{};
  const std::size_t count = file.readBeginning(bytes);
  return matroskaExtent(std::span(bytes).first(count)).value_or(0);
}

/// Whether the file is a picture in the container of movies (ISO/IEC 23008-12, 10.2 and AV1
/// Image File Format, 4). Newer libraries, those of FFmpeg 7.1 among them, open these as films of
/// one frame.
bool isStillPicture(const AVFormatContext& format) {
  constexpr std::array<std::string_view, 8> brands = {"heic", "heix", "heim", "heis",
                                                      "mif1", "mif2", "miaf", "avif"};
  const AVDictionaryEntry* const brand =
      av_dict_get(format.metadata, "major_brand", nullptr, AV_DICT_MATCH_CASE);
  return brand != nullptr && std::ranges::find(brands, brand->value) != brands.end();
}

bool isSoundOrVideo(const AVStream* stream) {
  const AVCodecParameters& codec = *stream->codecpar;
  if (codec.codec_id == AV_CODEC_ID_NONE) return false;
  if (codec.codec_type == AVMEDIA_TYPE_AUDIO) return true;
  return codec.codec_type == AVMEDIA_TYPE_VIDEO &&
         (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
}

}  // namespace

std::unique_ptr<MediaInput> MediaInput::open(const FileURL& url) try {
  std::unique_ptr<MediaInput> input(new MediaInput(MediaFile::openForReading(url)));
  input->format_ = allocated(avformat_alloc_context());
  AVFormatContext& format = *input->format_;
  format.pb = input->file_->context();
  format.io_open = refuseToOpen;
  format.flags |= AVFMT_FLAG_GENPTS;
  format.format_whitelist = allocated(av_strdup(containers));
  // Frees the context when it fails.
  checked(avformat_open_input(&input->format_, nullptr, nullptr, nullptr));
  if (format.probe_score <= AVPROBE_SCORE_RETRY) return nullptr;
  checked(avformat_find_stream_info(&format, nullptr));
  if (!input->hasSoundOrVideo() || isStillPicture(format)) return nullptr;
  return input;
} catch (const PlatformError&) {
  return nullptr;
}

MediaInput::MediaInput(std::unique_ptr<MediaFile> file) : file_(std::move(file)) {}

MediaInput::~MediaInput() {
  avformat_close_input(&format_);
}

std::span<AVStream* const> MediaInput::streams() const {
  return {format_->streams, format_->nb_streams};
}

std::int64_t MediaInput::startTime() const {
  // A movie has a time line, on which a late beginning is meant.
  if (isMovie() || format_->start_time == AV_NOPTS_VALUE) return 0;
  return std::max<std::int64_t>(0, format_->start_time);
}

bool MediaInput::read(AVPacket& packet) {
  const int result = av_read_frame(format_, &packet);
  if (result == AVERROR_EOF) {
    checked(format_->pb->error);
    throwIfCutOff();
    return false;
  }
  checked(result);
  if ((packet.flags & AV_PKT_FLAG_CORRUPT) != 0) throw mediaError(AVERROR_INVALIDDATA);
  return true;
}

bool MediaInput::readWhatIsThere(AVPacket& packet) {
  if (av_read_frame(format_, &packet) >= 0) return true;
  checked(format_->pb->error);
  return false;
}

// The libraries take the end of a file that was cut off for the end of the film.
void MediaInput::throwIfCutOff() const {
  const std::int64_t size = file_->size();
  if (std::cmp_greater(declaredExtent(*file_), size)) throw mediaError(AVERROR_INVALIDDATA);
  for (AVStream* const stream : streams()) {
    const int count = avformat_index_get_entries_count(stream);
    for (int i = 0; i < count; ++i) {
      const AVIndexEntry& entry = *avformat_index_get_entry(stream, i);
      if (entry.pos + entry.size > size) throw mediaError(AVERROR_INVALIDDATA);
    }
  }
}

bool MediaInput::isMovie() const {
  return format_->iformat->name == movieFormat;
}

bool MediaInput::hasSoundOrVideo() const {
  return std::ranges::any_of(streams(), isSoundOrVideo);
}

}  // namespace kestrivane

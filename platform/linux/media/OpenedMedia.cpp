#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/OpenedMedia.hpp"

#include <utility>

#include "platform/linux/media/LibavHandles.hpp"
#include "platform/linux/media/MediaExport.hpp"
#include "platform/linux/media/MediaInput.hpp"

namespace kestrivane {
namespace {

class OpenedFilm final : public OpenedMedia {
 public:
  explicit OpenedFilm(std::unique_ptr<MediaInput> input) : input_(std::move(input)) {}

  bool needsEncoding(MediaFileType fileType) override {
    return kestrivane::needsEncoding(*input_, fileType);
  }

  void exportTo(const FileURL& destination, MediaFileType fileType) override {
    exportMedia(*input_, destination, fileType);
  }

 private:
  const std::unique_ptr<MediaInput> input_;
};

}  // namespace

std::unique_ptr<OpenedMedia> openMedia(const FileURL& url) {
  av_log_set_level(AV_LOG_QUIET);
  std::unique_ptr<MediaInput> input = MediaInput::open(url);
  if (!input) return nullptr;
  return std::make_unique<OpenedFilm>(std::move(input));
}

}  // namespace kestrivane

#include "cli/Converters.hpp"

#include "converters/FFmpegConverter.hpp"
#include "converters/ImageConverter.hpp"
#include "converters/VideoConverter.hpp"
#include "platform/linux/media/MediaModule.hpp"

namespace kestrivane {
namespace {

/// Each takes all processors, and several hundred megabytes for a film of high resolution. So many
/// that films of a few folders never wait for those of others; so few that the memory lasts.
constexpr int encodingsAtOnce = 8;

}  // namespace

Converters::Converters(const FileManager& fileManager, UnifiedLog& log, Dispatch& dispatch)
    : fileManager_(fileManager),
      log_(log),
      dispatch_(dispatch),
      encodingQueue_(dispatch.longWorkQueue(), encodingsAtOnce),
      assetExporter_(dispatch.longWorkQueue(), encodingQueue_,
                     [this](const FileURL& url) { return mediaModule::open(bundle_, url); }) {}

std::vector<std::shared_ptr<const FileConverter>> Converters::make() {
  return {
      std::make_shared<ImageConverter>(imageIO_,
                                       dispatch_.globalQueue(QualityOfService::userInitiated)),
      std::make_shared<VideoConverter>(assetExporter_),
      std::make_shared<FFmpegConverter>(FFmpegConverter::Services{
          bundle_, fileManager_, process_, mediaInspector_, log_, encodingQueue_}),
  };
}

}  // namespace kestrivane

#include "cli/Converters.hpp"

#include "converters/FFmpegConverter.hpp"
#include "converters/ImageConverter.hpp"
#include "converters/VideoConverter.hpp"
#include "platform/linux/media/MediaModule.hpp"

namespace kestrivane {

Converters::Converters(const FileManager& fileManager, UnifiedLog& log, Dispatch& dispatch)
    : fileManager_(fileManager),
      log_(log),
      dispatch_(dispatch),
      assetExporter_(dispatch.longWorkQueue(),
                     [this](const FileURL& url) { return mediaModule::open(bundle_, url); }) {}

std::vector<std::shared_ptr<const FileConverter>> Converters::make() {
  return {
      std::make_shared<ImageConverter>(imageIO_,
                                       dispatch_.globalQueue(QualityOfService::userInitiated)),
      std::make_shared<VideoConverter>(assetExporter_),
      std::make_shared<FFmpegConverter>(FFmpegConverter::Services{bundle_, fileManager_, process_,
                                                                  log_, dispatch_.longWorkQueue()}),
  };
}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/LinuxAssetExporter.hpp"

#include <utility>

#include "async/RunOn.hpp"
#include "platform/linux/media/LibavHandles.hpp"
#include "platform/linux/media/MediaExport.hpp"
#include "platform/linux/media/MediaInput.hpp"

namespace kestrivane {
namespace {

class Session final : public AssetExportSession {
 public:
  Session(std::shared_ptr<MediaInput> input, Executor& longWorkQueue)
      : input_(std::move(input)), longWorkQueue_(longWorkQueue) {}

  Task<void> exportAsset(FileURL destinationURL, MediaFileType fileType) override {
    const auto work = [input = input_, destinationURL, fileType] {
      exportMedia(*input, destinationURL, fileType);
    };
    co_await runOn(longWorkQueue_, work);
  }

 private:
  const std::shared_ptr<MediaInput> input_;
  Executor& longWorkQueue_;
};

}  // namespace

LinuxAssetExporter::LinuxAssetExporter(Executor& longWorkQueue) : longWorkQueue_(&longWorkQueue) {
  av_log_set_level(AV_LOG_QUIET);
}

Task<std::unique_ptr<AssetExportSession>> LinuxAssetExporter::createSession(
    FileURL assetURL, ExportPreset /*preset*/) const {
  const auto open = [assetURL] { return MediaInput::open(assetURL); };
  std::unique_ptr<MediaInput> input = co_await runOn(*longWorkQueue_, open);
  if (!input) co_return nullptr;
  co_return std::make_unique<Session>(std::move(input), *longWorkQueue_);
}

}  // namespace kestrivane

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/LinuxAssetExporter.hpp"

#include <utility>

#include "async/RunOn.hpp"

namespace kestrivane {
namespace {

class Session final : public AssetExportSession {
 public:
  Session(std::shared_ptr<OpenedMedia> media, Executor& longWorkQueue, Executor& encodingQueue)
      : media_(std::move(media)), longWorkQueue_(longWorkQueue), encodingQueue_(encodingQueue) {}

  Task<void> exportAsset(FileURL destinationURL, MediaFileType fileType) override {
    const auto look = [media = media_, fileType] { return media->needsEncoding(fileType); };
    const bool encodes = co_await runOn(longWorkQueue_, look);
    const auto work = [media = media_, destinationURL, fileType] {
      media->exportTo(destinationURL, fileType);
    };
    co_await runOn(encodes ? encodingQueue_ : longWorkQueue_, work);
  }

 private:
  const std::shared_ptr<OpenedMedia> media_;
  Executor& longWorkQueue_;
  Executor& encodingQueue_;
};

}  // namespace

LinuxAssetExporter::LinuxAssetExporter(Executor& longWorkQueue, Executor& encodingQueue, Open open)
    : longWorkQueue_(&longWorkQueue), encodingQueue_(&encodingQueue), open_(std::move(open)) {}

Task<std::unique_ptr<AssetExportSession>> LinuxAssetExporter::createSession(
    FileURL assetURL, ExportPreset /*preset*/) const {
  const auto open = [assetURL, open = open_] { return open(assetURL); };
  std::unique_ptr<OpenedMedia> media = co_await runOn(*longWorkQueue_, open);
  if (!media) co_return nullptr;
  co_return std::make_unique<Session>(std::move(media), *longWorkQueue_, *encodingQueue_);
}

}  // namespace kestrivane

#include "tests/support/FakeAssetExporter.hpp"

#include <utility>

#include "platform/PlatformError.hpp"

namespace kestrivane::test {
namespace {

constexpr std::string_view filmPrefix = "film ";

std::string nameOf(MediaFileType fileType) {
  switch (fileType) {
    case MediaFileType::mpeg4:
      return "mpeg4";
    case MediaFileType::quickTimeMovie:
      return "quickTimeMovie";
    case MediaFileType::appleM4V:
      return "appleM4V";
  }
  return "?";
}

std::string nameOf(ExportPreset preset) {
  return preset == ExportPreset::highestQuality ? "highestQuality" : "?";
}

}  // namespace

class FakeAssetExporter::Session final : public AssetExportSession {
 public:
  Session(const FakeAssetExporter& library, std::string film)
      : library_(library), film_(std::move(film)) {}

  Task<void> exportAsset(FileURL destinationURL, MediaFileType fileType) override {
    library_.operations.push_back("export " + destinationURL.path() + " " + nameOf(fileType));
    if (library_.exportFailure) throw PlatformError(1, *library_.exportFailure);
    library_.fileSystem_.writeFile(destinationURL.path(), nameOf(fileType) + " " + film_);
    co_return;
  }

 private:
  const FakeAssetExporter& library_;
  std::string film_;
};

Task<std::unique_ptr<AssetExportSession>> FakeAssetExporter::createSession(
    FileURL assetURL, ExportPreset preset) const {
  operations.push_back("session " + assetURL.path() + " " + nameOf(preset));
  if (sessionFailure) throw PlatformError(1, *sessionFailure);
  const std::optional<std::string> content = fileSystem_.content(assetURL.path());
  if (!content || !content->starts_with(filmPrefix)) co_return nullptr;
  co_return std::make_unique<Session>(*this, content->substr(filmPrefix.size()));
}

}  // namespace kestrivane::test

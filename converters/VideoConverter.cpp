#include "converters/VideoConverter.hpp"

#include <algorithm>
#include <array>
#include <exception>
#include <memory>
#include <optional>
#include <string>

#include "engine/ConversionError.hpp"
#include "platform/PlatformError.hpp"
#include "platform/Unicode.hpp"

namespace kestrivane {
namespace {

struct OutputFileType {
  std::string_view extension;
  MediaFileType fileType;
};

constexpr std::array outputFileTypes = {
    OutputFileType{"mp4", MediaFileType::mpeg4},
    OutputFileType{"mov", MediaFileType::quickTimeMovie},
    OutputFileType{"m4v", MediaFileType::appleM4V},
};

std::optional<MediaFileType> fileTypeFor(std::string_view extension) {
  const auto* const type =
      std::ranges::find(outputFileTypes, extension, &OutputFileType::extension);
  if (type == outputFileTypes.end()) return std::nullopt;
  return type->fileType;
}

/// As the error of a conversion, with the description of the exception that is being handled.
[[noreturn]] void throwConversionFailed() {
  throw ConversionError::conversionFailed(localizedDescription(std::current_exception()));
}

}  // namespace

VideoConverter::VideoConverter(const AssetExporter& exporter)
    : exporter_(&exporter), supportedExtensions_{"mp4", "mov", "m4v"} {}

bool VideoConverter::canConvert(std::string_view from, std::string_view to) const {
  return supports(from) && supports(to);
}

bool VideoConverter::supports(std::string_view extension) const {
  return std::ranges::find(supportedExtensions_, lowercased(extension)) !=
         supportedExtensions_.end();
}

Task<void> VideoConverter::convert(FileURL sourceURL, FileURL destinationURL) const {
  const auto fileType = fileTypeFor(lowercased(destinationURL.pathExtension()));
  if (!fileType) {
    throw ConversionError::unsupportedFormat(sourceURL.pathExtension(),
                                             destinationURL.pathExtension());
  }
  std::unique_ptr<AssetExportSession> session;
  try {
    session = co_await exporter_->createSession(sourceURL, ExportPreset::highestQuality);
  } catch (...) {
    throwConversionFailed();
  }
  if (!session) {
    throw ConversionError::conversionFailed("Не удалось создать AVAssetExportSession для видео: " +
                                            sourceURL.lastPathComponent());
  }
  try {
    co_await session->exportAsset(destinationURL, *fileType);
  } catch (...) {
    throwConversionFailed();
  }
}

}  // namespace kestrivane

// Brings videos from one container into another: MP4, QuickTime movie and M4V.
//
// Thread-safety: called on the main thread; the export runs elsewhere, any number of them at once.
// Ownership: refers to the media library, which outlives it.
#pragma once

#include <string_view>
#include <vector>

#include "engine/FileConverter.hpp"
#include "platform/AssetExportSession.hpp"

namespace kestrivane {

class VideoConverter final : public FileConverter {
 public:
  explicit VideoConverter(const AssetExporter& exporter);

  bool canConvert(std::string_view from, std::string_view to) const override;

  /// Exports at the highest quality. Throws `ConversionError`.
  Task<void> convert(FileURL sourceURL, FileURL destinationURL) const override;

 private:
  bool supports(std::string_view extension) const;

  const AssetExporter* exporter_;
  std::vector<std::string_view> supportedExtensions_;
};

}  // namespace kestrivane

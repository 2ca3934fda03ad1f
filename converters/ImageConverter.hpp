// Turns one still picture into another format.
//
// Thread-safety: called on the main thread; decoding, scaling and encoding run on the work queue,
// where any number of conversions may be under way at once. Ownership: refers to the picture
// library and to the queue, which outlive it.
#pragma once

#include <string_view>
#include <vector>

#include "async/Executor.hpp"
#include "engine/FileConverter.hpp"
#include "platform/ImageIO.hpp"

namespace kestrivane {

class ImageConverter final : public FileConverter {
 public:
  /// `workQueue` is the global queue for work that the user waits for.
  ImageConverter(const ImageIO& imageIO, Executor& workQueue);

  bool canConvert(std::string_view from, std::string_view to) const override;

  /// Converts the first picture of the source. An icon gets the centred square of the picture,
  /// scaled to one of the sizes 16, 32, 48, 128 and 256. Throws `ConversionError`.
  Task<void> convert(FileURL sourceURL, FileURL destinationURL) const override;

 private:
  bool supports(std::string_view extension) const;

  const ImageIO* imageIO_;
  Executor* workQueue_;
  std::vector<std::string_view> supportedExtensions_;
};

}  // namespace kestrivane

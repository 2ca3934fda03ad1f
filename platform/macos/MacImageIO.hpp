// Pictures on macOS: ImageIO and CoreGraphics behind the `ImageIO` interface.
//
// Pictures are read and written with the system's defaults and without properties. Since no
// orientation is written, a picture that is stored turned is turned upright once it is decoded.
// What the system cannot write, WebP on all its versions so far, has no destination. Thread-safety
// and ownership: as `ImageIO` says; this class keeps no state.
#pragma once

#include "platform/ImageIO.hpp"

namespace kestrivane {

class MacImageIO final : public ImageIO {
 public:
  std::unique_ptr<ImageSource> createSource(const FileURL& url) const override;
  std::unique_ptr<ImageDestination> createDestination(const FileURL& url,
                                                      std::string_view typeIdentifier,
                                                      std::size_t imageCount) const override;
  std::unique_ptr<BitmapContext> createBitmapContext(std::size_t width, std::size_t height,
                                                     std::size_t bitsPerComponent,
                                                     BitmapInfo info) const override;
};

}  // namespace kestrivane

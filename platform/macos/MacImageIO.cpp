#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacImageIO.hpp"

#include <utility>

#include <ImageIO/ImageIO.h>

#include "platform/macos/CFReference.hpp"
#include "platform/macos/CFText.hpp"
#include "platform/macos/MacBitmapContext.hpp"
#include "platform/macos/MacImage.hpp"
#include "platform/macos/UprightImage.hpp"

namespace kestrivane {
namespace {

class MacImageSource final : public ImageSource {
 public:
  explicit MacImageSource(CFReference<CGImageSourceRef> source) : source_(std::move(source)) {}

  std::shared_ptr<const Image> createImage(std::size_t index) override {
    CFReference<CGImageRef> image(CGImageSourceCreateImageAtIndex(source_.get(), index, nullptr));
    // Of a file that ends too early the system makes a picture that is blank from there on.
    if (CGImageSourceGetStatusAtIndex(source_.get(), index) != kCGImageStatusComplete)
      return nullptr;
    return MacImage::create(upright(std::move(image), orientationAt(source_.get(), index)));
  }

 private:
  CFReference<CGImageSourceRef> source_;
};

class MacImageDestination final : public ImageDestination {
 public:
  explicit MacImageDestination(CFReference<CGImageDestinationRef> destination)
      : destination_(std::move(destination)) {}

  void addImage(std::shared_ptr<const Image> image) override {
    CGImageDestinationAddImage(destination_.get(), dynamic_cast<const MacImage&>(*image).get(),
                               nullptr);
  }

  bool finalize() override { return CGImageDestinationFinalize(destination_.get()); }

 private:
  CFReference<CGImageDestinationRef> destination_;
};

CFReference<CFURLRef> makeCFURL(const FileURL& url) {
  const std::string& path = url.path();
  return CFReference<CFURLRef>(CFURLCreateFromFileSystemRepresentation(
      kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()),
      static_cast<CFIndex>(path.size()), false));
}

}  // namespace

std::unique_ptr<ImageSource> MacImageIO::createSource(const FileURL& url) const {
  const CFReference<CFURLRef> file = makeCFURL(url);
  if (!file) return nullptr;
  CFReference<CGImageSourceRef> source(CGImageSourceCreateWithURL(file.get(), nullptr));
  if (!source) return nullptr;
  return std::make_unique<MacImageSource>(std::move(source));
}

std::unique_ptr<ImageDestination> MacImageIO::createDestination(const FileURL& url,
                                                                std::string_view typeIdentifier,
                                                                std::size_t imageCount) const {
  const CFReference<CFURLRef> file = makeCFURL(url);
  const CFReference<CFStringRef> type = makeCFString(typeIdentifier);
  if (!file || !type) return nullptr;
  CFReference<CGImageDestinationRef> destination(
      CGImageDestinationCreateWithURL(file.get(), type.get(), imageCount, nullptr));
  if (!destination) return nullptr;
  return std::make_unique<MacImageDestination>(std::move(destination));
}

std::unique_ptr<BitmapContext> MacImageIO::createBitmapContext(std::size_t width,
                                                               std::size_t height,
                                                               std::size_t bitsPerComponent,
                                                               BitmapInfo info) const {
  return MacBitmapContext::create(width, height, bitsPerComponent, info);
}

}  // namespace kestrivane

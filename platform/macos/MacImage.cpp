#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacImage.hpp"

#include <utility>

namespace kestrivane {

std::shared_ptr<const Image> MacImage::create(CFReference<CGImageRef> image) {
  if (!image) return nullptr;
  return std::shared_ptr<const Image>(new MacImage(std::move(image)));
}

std::shared_ptr<const Image> MacImage::cropping(const Rect& rect) const {
  return create(CFReference<CGImageRef>(
      CGImageCreateWithImageInRect(get(), CGRectMake(rect.x, rect.y, rect.width, rect.height))));
}

}  // namespace kestrivane

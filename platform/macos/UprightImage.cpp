#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/UprightImage.hpp"

#include <cstdint>

namespace kestrivane {
namespace {

/// The way of every point of a stored picture of this size. The system's origin is the lower left
/// corner.
CGAffineTransform transformOf(int orientation, CGFloat width, CGFloat height) {
  switch (orientation) {
    case 2:  // the first row is the top, the first column the right edge
      return {-1, 0, 0, 1, width, 0};
    case 3:  // bottom, right
      return {-1, 0, 0, -1, width, height};
    case 4:  // bottom, left
      return {1, 0, 0, -1, 0, height};
    case 5:  // left, top
      return {0, -1, -1, 0, height, width};
    case 6:  // right, top
      return {0, -1, 1, 0, 0, width};
    case 7:  // right, bottom
      return {0, 1, 1, 0, 0, 0};
    case 8:  // left, bottom
      return {0, 1, -1, 0, height, 0};
    default:
      return {1, 0, 0, 1, 0, 0};
  }
}

bool hasAlpha(CGImageRef image) {
  switch (CGImageGetAlphaInfo(image)) {
    case kCGImageAlphaNone:
    case kCGImageAlphaNoneSkipFirst:
    case kCGImageAlphaNoneSkipLast:
      return false;
    default:
      return true;
  }
}

/// The image's own colours where a canvas can have them, else sRGB.
CFReference<CGContextRef> makeCanvas(CGImageRef image, std::size_t width, std::size_t height) {
  const std::size_t bitsPerComponent = CGImageGetBitsPerComponent(image) > 8 ? 16 : 8;
  const std::uint32_t info =
      hasAlpha(image) ? kCGImageAlphaPremultipliedLast : kCGImageAlphaNoneSkipLast;
  const CFReference<CGColorSpaceRef> standard(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
  const CGColorSpaceRef own = CGImageGetColorSpace(image);
  const bool isUsable = own != nullptr && CGColorSpaceGetModel(own) == kCGColorSpaceModelRGB &&
                        CGColorSpaceSupportsOutput(own);
  return CFReference<CGContextRef>(CGBitmapContextCreate(nullptr, width, height, bitsPerComponent,
                                                         0, isUsable ? own : standard.get(), info));
}

}  // namespace

int orientationAt(CGImageSourceRef source, std::size_t index) {
  const CFReference<CFDictionaryRef> properties(
      CGImageSourceCopyPropertiesAtIndex(source, index, nullptr));
  if (!properties) return 1;
  const CFTypeRef value = CFDictionaryGetValue(properties.get(), kCGImagePropertyOrientation);
  int orientation = 1;
  if (value != nullptr && CFGetTypeID(value) == CFNumberGetTypeID())
    CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberIntType, &orientation);
  return orientation;
}

CFReference<CGImageRef> upright(CFReference<CGImageRef> image, int orientation) {
  if (!image || orientation < 2 || orientation > 8) return image;
  const std::size_t width = CGImageGetWidth(image.get());
  const std::size_t height = CGImageGetHeight(image.get());
  const bool isOnItsSide = orientation >= 5;
  const CFReference<CGContextRef> canvas =
      makeCanvas(image.get(), isOnItsSide ? height : width, isOnItsSide ? width : height);
  if (!canvas) return nullptr;
  const auto right = static_cast<CGFloat>(width);
  const auto top = static_cast<CGFloat>(height);
  CGContextSetInterpolationQuality(canvas.get(), kCGInterpolationNone);  // pixels stay pixels
  CGContextConcatCTM(canvas.get(), transformOf(orientation, right, top));
  CGContextDrawImage(canvas.get(), CGRectMake(0, 0, right, top), image.get());
  return CFReference<CGImageRef>(CGBitmapContextCreateImage(canvas.get()));
}

}  // namespace kestrivane

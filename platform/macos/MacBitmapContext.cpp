#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacBitmapContext.hpp"

#include <cstdint>
#include <utility>

#include "platform/macos/MacImage.hpp"

namespace kestrivane {

static_assert(static_cast<int>(InterpolationQuality::high) == kCGInterpolationHigh);
static_assert(static_cast<int>(BitmapInfo::premultipliedLast) == kCGImageAlphaPremultipliedLast);

std::unique_ptr<BitmapContext> MacBitmapContext::create(std::size_t width, std::size_t height,
                                                        std::size_t bitsPerComponent,
                                                        BitmapInfo info) {
  const CFReference<CGColorSpaceRef> space(CGColorSpaceCreateDeviceRGB());
  CFReference<CGContextRef> context(CGBitmapContextCreate(
      nullptr, width, height, bitsPerComponent, 0, space.get(), static_cast<std::uint32_t>(info)));
  if (!context) return nullptr;
  return std::unique_ptr<BitmapContext>(new MacBitmapContext(std::move(context), height));
}

void MacBitmapContext::setInterpolationQuality(InterpolationQuality quality) {
  CGContextSetInterpolationQuality(context_.get(), static_cast<CGInterpolationQuality>(quality));
}

void MacBitmapContext::draw(const Image& image, const Rect& rect) {
  // The system's origin is the lower left corner.
  const CGFloat bottom = height_ - rect.y - rect.height;
  CGContextDrawImage(context_.get(), CGRectMake(rect.x, bottom, rect.width, rect.height),
                     dynamic_cast<const MacImage&>(image).get());
}

std::shared_ptr<const Image> MacBitmapContext::makeImage() {
  return MacImage::create(CFReference<CGImageRef>(CGBitmapContextCreateImage(context_.get())));
}

}  // namespace kestrivane

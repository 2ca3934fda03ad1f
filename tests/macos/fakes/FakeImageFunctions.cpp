// ImageIO and CoreGraphics for pictures that are lines of text: "picture WIDTHxHEIGHT" is one that
// decodes, "damaged" one that opens and does not decode, and everything else is no picture. What is
// written is again a line: "TYPE WIDTHxHEIGHT".
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <sstream>
#include <string>

#include <ImageIO/ImageIO.h>

#include "tests/macos/fakes/FakeCoreFoundation.hpp"

using kestrivane::test::fakeSystem;

struct CGImage final : kestrivane::test::FakeObject {
  CGImage(std::size_t pixelWidth, std::size_t pixelHeight)
      : width(pixelWidth), height(pixelHeight) {}
  const char* kind() const override { return "image"; }
  std::size_t width;
  std::size_t height;
};

struct CGColorSpace final : kestrivane::test::FakeObject {
  const char* kind() const override { return "colour space"; }
};

struct CGContext final : kestrivane::test::FakeObject {
  CGContext(std::size_t pixelWidth, std::size_t pixelHeight)
      : width(pixelWidth), height(pixelHeight) {}
  const char* kind() const override { return "context"; }
  std::size_t width;
  std::size_t height;
};

struct CGImageSource final : kestrivane::test::FakeObject {
  explicit CGImageSource(std::string text) : content(std::move(text)) {}
  const char* kind() const override { return "source"; }
  std::string content;
};

struct CGImageDestination final : kestrivane::test::FakeObject {
  CGImageDestination(std::string file, std::string typeIdentifier)
      : path(std::move(file)), type(std::move(typeIdentifier)) {}
  const char* kind() const override { return "destination"; }
  std::string path;
  std::string type;
  std::string picture;
};

namespace {

/// Records the call, then its arguments. True when it is to fail.
template <typename... Arguments>
bool failsAfterRecording(const char* function, const Arguments&... arguments) {
  std::ostringstream call;
  call << function;
  ((call << ' ' << arguments), ...);
  fakeSystem().calls.push_back(call.str());
  return fakeSystem().fails(function);
}

std::string sizeOf(std::size_t width, std::size_t height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

std::string describe(CGRect rect) {
  std::ostringstream text;
  text << rect.origin.x << ',' << rect.origin.y << ' ' << rect.size.width << 'x'
       << rect.size.height;
  return text.str();
}

const char* describe(CFDictionaryRef dictionary) {
  return dictionary == nullptr ? "none" : "some";
}

}  // namespace

CGImageSourceRef CGImageSourceCreateWithURL(CFURLRef url, CFDictionaryRef options) {
  if (failsAfterRecording("CGImageSourceCreateWithURL", url->path, describe(options)))
    return nullptr;
  const std::optional<std::string> content = fakeSystem().files.content(url->path);
  if (!content || (!content->starts_with("picture ") && *content != "damaged")) return nullptr;
  return fakeSystem().create<CGImageSource>(*content);
}

CGImageRef CGImageSourceCreateImageAtIndex(CGImageSourceRef source, size_t index,
                                           CFDictionaryRef options) {
  if (failsAfterRecording("CGImageSourceCreateImageAtIndex", index, describe(options)))
    return nullptr;
  std::size_t width = 0;
  std::size_t height = 0;
  if (std::sscanf(source->content.c_str(), "picture %zux%zu", &width, &height) != 2) return nullptr;
  return fakeSystem().create<CGImage>(width, height);
}

CGImageDestinationRef CGImageDestinationCreateWithURL(CFURLRef url, CFStringRef type, size_t count,
                                                      CFDictionaryRef options) {
  if (failsAfterRecording("CGImageDestinationCreateWithURL", url->path, type->text, count,
                          describe(options)))
    return nullptr;
  return fakeSystem().create<CGImageDestination>(url->path, type->text);
}

void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image,
                                CFDictionaryRef properties) {
  destination->picture = sizeOf(image->width, image->height);
  failsAfterRecording("CGImageDestinationAddImage", destination->picture, describe(properties));
}

bool CGImageDestinationFinalize(CGImageDestinationRef destination) {
  if (failsAfterRecording("CGImageDestinationFinalize") || destination->picture.empty())
    return false;
  fakeSystem().files.writeFile(destination->path, destination->type + " " + destination->picture);
  return true;
}

size_t CGImageGetWidth(CGImageRef image) {
  failsAfterRecording("CGImageGetWidth");
  return image->width;
}

size_t CGImageGetHeight(CGImageRef image) {
  failsAfterRecording("CGImageGetHeight");
  return image->height;
}

CGImageRef CGImageCreateWithImageInRect(CGImageRef image, CGRect rect) {
  if (failsAfterRecording("CGImageCreateWithImageInRect", describe(rect))) return nullptr;
  const auto edge = [](double value, std::size_t limit) {
    return static_cast<std::size_t>(std::clamp(value, 0.0, static_cast<double>(limit)));
  };
  const std::size_t left = edge(std::floor(rect.origin.x), image->width);
  const std::size_t top = edge(std::floor(rect.origin.y), image->height);
  const std::size_t right = edge(std::ceil(rect.origin.x + rect.size.width), image->width);
  const std::size_t bottom = edge(std::ceil(rect.origin.y + rect.size.height), image->height);
  if (left >= right || top >= bottom) return nullptr;
  return fakeSystem().create<CGImage>(right - left, bottom - top);
}

CGColorSpaceRef CGColorSpaceCreateDeviceRGB() {
  if (failsAfterRecording("CGColorSpaceCreateDeviceRGB")) return nullptr;
  return fakeSystem().create<CGColorSpace>();
}

CGContextRef CGBitmapContextCreate(void* data, size_t width, size_t height, size_t bitsPerComponent,
                                   size_t bytesPerRow, CGColorSpaceRef space, uint32_t bitmapInfo) {
  if (failsAfterRecording("CGBitmapContextCreate", data == nullptr ? "none" : "some",
                          sizeOf(width, height), bitsPerComponent, bytesPerRow, bitmapInfo) ||
      space == nullptr)
    return nullptr;
  return fakeSystem().create<CGContext>(width, height);
}

CGImageRef CGBitmapContextCreateImage(CGContextRef context) {
  if (failsAfterRecording("CGBitmapContextCreateImage")) return nullptr;
  return fakeSystem().create<CGImage>(context->width, context->height);
}

void CGContextSetInterpolationQuality(CGContextRef, CGInterpolationQuality quality) {
  failsAfterRecording("CGContextSetInterpolationQuality", static_cast<int>(quality));
}

void CGContextDrawImage(CGContextRef, CGRect rect, CGImageRef image) {
  failsAfterRecording("CGContextDrawImage", describe(rect), sizeOf(image->width, image->height));
}

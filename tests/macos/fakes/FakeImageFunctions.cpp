// ImageIO and CoreGraphics for pictures that are lines of text: "picture WIDTHxHEIGHT" is one that
// decodes, with " orientation N" after it one that is stored turned, and with " deep", " grey" or
// " opaque" one of such pixels; "half a picture WIDTHxHEIGHT" is one that ends too early, "damaged"
// one that opens and does not decode, and everything else is no picture. What is written is again a
// line: "TYPE WIDTHxHEIGHT", and its corners if they are not where they were stored.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <sstream>
#include <string>

#include <ImageIO/ImageIO.h>

#include "tests/macos/fakes/FakeCoreFoundation.hpp"

using kestrivane::test::fakeSystem;

struct CGColorSpace final : kestrivane::test::FakeObject {
  explicit CGColorSpace(CGColorSpaceModel colorModel) : model(colorModel) {}
  const char* kind() const override { return "colour space"; }
  CGColorSpaceModel model;
};

/// The corners' names, clockwise from the upper left one: of a picture as it is stored "ABCD".
using Corners = std::array<char, 5>;
constexpr Corners corners{"ABCD"};

struct CGImage final : kestrivane::test::FakeObject {
  CGImage(std::size_t pixelWidth, std::size_t pixelHeight, Corners seen)
      : width(pixelWidth), height(pixelHeight), itsCorners(seen) {}
  const char* kind() const override { return "image"; }
  std::size_t width;
  std::size_t height;
  Corners itsCorners;
  std::size_t bitsPerComponent = 8;
  CGImageAlphaInfo alphaInfo = kCGImageAlphaLast;
  CGColorSpace space{kCGColorSpaceModelRGB};  ///< which the image owns and lends
};

struct CGContext final : kestrivane::test::FakeObject {
  CGContext(std::size_t pixelWidth, std::size_t pixelHeight)
      : width(pixelWidth), height(pixelHeight) {}
  const char* kind() const override { return "context"; }
  std::size_t width;
  std::size_t height;
  CGAffineTransform transform{1, 0, 0, 1, 0, 0};
  Corners itsCorners{"----"};
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

/// Clockwise from the upper left corner; the origin is the lower left one.
std::array<CGPoint, 4> cornersOf(CGRect rect) {
  const CGFloat right = rect.origin.x + rect.size.width;
  const CGFloat top = rect.origin.y + rect.size.height;
  return {{{rect.origin.x, top}, {right, top}, {right, rect.origin.y}, rect.origin}};
}

CGPoint applied(const CGAffineTransform& transform, CGPoint point) {
  return {transform.a * point.x + transform.c * point.y + transform.tx,
          transform.b * point.x + transform.d * point.y + transform.ty};
}

constexpr char tag = 0;

/// What macOS writes.
bool isWritable(const std::string& type) {
  return type != "org.webmproject.webp";
}

}  // namespace

// Only their addresses count.
const CFStringRef kCGImagePropertyOrientation = reinterpret_cast<CFStringRef>(&tag);
const CFStringRef kCGColorSpaceSRGB = reinterpret_cast<CFStringRef>(&tag);

CGImageSourceRef CGImageSourceCreateWithURL(CFURLRef url, CFDictionaryRef options) {
  if (failsAfterRecording("CGImageSourceCreateWithURL", url->path, describe(options)))
    return nullptr;
  const std::optional<std::string> content = fakeSystem().files.content(url->path);
  if (!content || (!content->starts_with("picture ") && !content->starts_with("half a picture ") &&
                   *content != "damaged"))
    return nullptr;
  return fakeSystem().create<CGImageSource>(*content);
}

CGImageRef CGImageSourceCreateImageAtIndex(CGImageSourceRef source, size_t index,
                                           CFDictionaryRef options) {
  if (failsAfterRecording("CGImageSourceCreateImageAtIndex", index, describe(options)))
    return nullptr;
  const std::size_t start = source->content.find("picture ");
  if (start == std::string::npos) return nullptr;
  const std::string description = source->content.substr(start);
  std::size_t width = 0;
  std::size_t height = 0;
  if (std::sscanf(description.c_str(), "picture %zux%zu", &width, &height) != 2) return nullptr;
  CGImage* const image = fakeSystem().create<CGImage>(width, height, corners);
  if (description.find("deep") != std::string::npos) image->bitsPerComponent = 16;
  if (description.find("opaque") != std::string::npos) image->alphaInfo = kCGImageAlphaNone;
  if (description.find("grey") != std::string::npos)
    image->space.model = kCGColorSpaceModelMonochrome;
  return image;
}

CGImageSourceStatus CGImageSourceGetStatusAtIndex(CGImageSourceRef source, size_t index) {
  failsAfterRecording("CGImageSourceGetStatusAtIndex", index);
  return source->content.starts_with("picture ") ? kCGImageStatusComplete
                                                 : kCGImageStatusUnexpectedEOF;
}

CFDictionaryRef CGImageSourceCopyPropertiesAtIndex(CGImageSourceRef source, size_t index,
                                                   CFDictionaryRef options) {
  if (failsAfterRecording("CGImageSourceCopyPropertiesAtIndex", index, describe(options)))
    return nullptr;
  const std::string key = " orientation ";
  const std::size_t place = source->content.find(key);
  if (place == std::string::npos)
    return fakeSystem().create<CFDictionaryObject>(std::map<const void*, CFTypeRef>());
  auto* const number =
      fakeSystem().create<CFNumberObject>(std::stoi(source->content.substr(place + key.size())));
  auto* const properties = fakeSystem().create<CFDictionaryObject>(
      std::map<const void*, CFTypeRef>{{kCGImagePropertyOrientation, number}});
  CFRelease(number);
  return properties;
}

CGImageDestinationRef CGImageDestinationCreateWithURL(CFURLRef url, CFStringRef type, size_t count,
                                                      CFDictionaryRef options) {
  if (failsAfterRecording("CGImageDestinationCreateWithURL", url->path, type->text, count,
                          describe(options)) ||
      !isWritable(type->text))
    return nullptr;
  return fakeSystem().create<CGImageDestination>(url->path, type->text);
}

void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image,
                                CFDictionaryRef properties) {
  destination->picture = sizeOf(image->width, image->height);
  if (image->itsCorners != corners)
    destination->picture += " " + std::string(image->itsCorners.data());
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

size_t CGImageGetBitsPerComponent(CGImageRef image) {
  return image->bitsPerComponent;
}

CGImageAlphaInfo CGImageGetAlphaInfo(CGImageRef image) {
  return image->alphaInfo;
}

CGColorSpaceRef CGImageGetColorSpace(CGImageRef image) {
  return &image->space;
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
  return fakeSystem().create<CGImage>(right - left, bottom - top, image->itsCorners);
}

CGColorSpaceRef CGColorSpaceCreateDeviceRGB() {
  if (failsAfterRecording("CGColorSpaceCreateDeviceRGB")) return nullptr;
  return fakeSystem().create<CGColorSpace>(kCGColorSpaceModelRGB);
}

CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef name) {
  if (failsAfterRecording("CGColorSpaceCreateWithName") || name != kCGColorSpaceSRGB)
    return nullptr;
  return fakeSystem().create<CGColorSpace>(kCGColorSpaceModelRGB);
}

CGColorSpaceModel CGColorSpaceGetModel(CGColorSpaceRef space) {
  return space->model;
}

bool CGColorSpaceSupportsOutput(CGColorSpaceRef) {
  return true;
}

CGContextRef CGBitmapContextCreate(void* data, size_t width, size_t height, size_t bitsPerComponent,
                                   size_t bytesPerRow, CGColorSpaceRef space, uint32_t bitmapInfo) {
  if (failsAfterRecording("CGBitmapContextCreate", data == nullptr ? "none" : "some",
                          sizeOf(width, height), bitsPerComponent, bytesPerRow, bitmapInfo) ||
      space == nullptr || space->model != kCGColorSpaceModelRGB)
    return nullptr;
  return fakeSystem().create<CGContext>(width, height);
}

CGImageRef CGBitmapContextCreateImage(CGContextRef context) {
  if (failsAfterRecording("CGBitmapContextCreateImage")) return nullptr;
  return fakeSystem().create<CGImage>(context->width, context->height, context->itsCorners);
}

void CGContextSetInterpolationQuality(CGContextRef, CGInterpolationQuality quality) {
  failsAfterRecording("CGContextSetInterpolationQuality", static_cast<int>(quality));
}

void CGContextConcatCTM(CGContextRef context, CGAffineTransform transform) {
  context->transform = transform;  // after none before it
}

void CGContextDrawImage(CGContextRef context, CGRect rect, CGImageRef image) {
  failsAfterRecording("CGContextDrawImage", describe(rect), sizeOf(image->width, image->height));
  const auto from = cornersOf(rect);
  const auto to = cornersOf(CGRectMake(0, 0, static_cast<CGFloat>(context->width),
                                       static_cast<CGFloat>(context->height)));
  for (std::size_t i = 0; i < from.size(); ++i) {
    const CGPoint reached = applied(context->transform, from[i]);
    for (std::size_t k = 0; k < to.size(); ++k)
      if (reached.x == to[k].x && reached.y == to[k].y)
        context->itsCorners[k] = image->itsCorners[i];
  }
}

// Reading, cropping, scaling and writing of still pictures.
//
// Thread-safety: an object belongs to one thread at a time; different objects are independent, and
// `ImageIO` itself may be used from any thread. Ownership: images are immutable and shared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/FileURL.hpp"

namespace kestrivane {

/// Type identifiers of the pictures that can be written.
namespace imageType {
inline constexpr std::string_view jpeg = "public.jpeg";
inline constexpr std::string_view png = "public.png";
inline constexpr std::string_view heic = "public.heic";
inline constexpr std::string_view tiff = "public.tiff";
inline constexpr std::string_view gif = "com.compuserve.gif";
inline constexpr std::string_view bmp = "com.microsoft.bmp";
inline constexpr std::string_view webp = "org.webmproject.webp";
inline constexpr std::string_view ico = "com.microsoft.ico";
}  // namespace imageType

/// Pixels; the origin is the upper left corner. Fractions are allowed.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

class Image {
 public:
  Image() = default;
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;
  virtual ~Image() = default;

  /// Pixels, of the upright picture.
  virtual std::size_t width() const = 0;
  virtual std::size_t height() const = 0;

  /// The part inside `rect`, grown to whole pixels and cut to the picture; null when nothing is
  /// left.
  virtual std::shared_ptr<const Image> cropping(const Rect& rect) const = 0;
};

class ImageSource {
 public:
  ImageSource() = default;
  ImageSource(const ImageSource&) = delete;
  ImageSource& operator=(const ImageSource&) = delete;
  virtual ~ImageSource() = default;

  /// Decodes the picture at `index`; null when it cannot be decoded or is damaged anywhere.
  virtual std::shared_ptr<const Image> createImage(std::size_t index) = 0;
};

class ImageDestination {
 public:
  ImageDestination() = default;
  ImageDestination(const ImageDestination&) = delete;
  ImageDestination& operator=(const ImageDestination&) = delete;
  virtual ~ImageDestination() = default;

  virtual void addImage(std::shared_ptr<const Image> image) = 0;

  /// Writes the file; false when it could not be written.
  virtual bool finalize() = 0;
};

enum class InterpolationQuality : int { standard = 0, none = 1, low = 2, high = 3, medium = 4 };

/// The layout of a bitmap context's pixels.
enum class BitmapInfo : std::uint32_t { premultipliedLast = 1 };

/// A canvas of device-RGB pixels, transparent at first.
class BitmapContext {
 public:
  BitmapContext() = default;
  BitmapContext(const BitmapContext&) = delete;
  BitmapContext& operator=(const BitmapContext&) = delete;
  virtual ~BitmapContext() = default;

  virtual void setInterpolationQuality(InterpolationQuality quality) = 0;

  /// Draws `image`, scaled, into `rect`.
  virtual void draw(const Image& image, const Rect& rect) = 0;

  /// What has been drawn; null on failure.
  virtual std::shared_ptr<const Image> makeImage() = 0;
};

class ImageIO {
 public:
  ImageIO() = default;
  ImageIO(const ImageIO&) = delete;
  ImageIO& operator=(const ImageIO&) = delete;
  virtual ~ImageIO() = default;

  /// Opens the file and recognises its format by its content, whatever its name; null when it is no
  /// picture that can be read. Nothing is decoded yet.
  virtual std::unique_ptr<ImageSource> createSource(const FileURL& url) const = 0;

  /// A destination for `imageCount` pictures of the type; null when the system cannot write it. The
  /// file at `url` must not exist.
  virtual std::unique_ptr<ImageDestination> createDestination(const FileURL& url,
                                                              std::string_view typeIdentifier,
                                                              std::size_t imageCount) const = 0;

  /// A canvas of `width` x `height` pixels; null when there is no memory for it.
  virtual std::unique_ptr<BitmapContext> createBitmapContext(std::size_t width, std::size_t height,
                                                             std::size_t bitsPerComponent,
                                                             BitmapInfo info) const = 0;
};

}  // namespace kestrivane

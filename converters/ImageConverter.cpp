#include "converters/ImageConverter.hpp"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "async/RunOn.hpp"
#include "engine/ConversionError.hpp"
#include "platform/Unicode.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

using ImagePointer = std::shared_ptr<const Image>;

struct TargetType {
  std::string_view extension;
  std::string_view identifier;
};

constexpr std::array targetTypes = {
    TargetType{"webp", imageType::webp}, TargetType{"heic", imageType::heic},
    TargetType{"ico", imageType::ico},   TargetType{"jpg", imageType::jpeg},
    TargetType{"jpeg", imageType::jpeg}, TargetType{"png", imageType::png},
    TargetType{"gif", imageType::gif},   TargetType{"tiff", imageType::tiff},
    TargetType{"bmp", imageType::bmp},
};

std::optional<std::string_view> typeIdentifierFor(std::string_view extension) {
  const auto* const type = std::ranges::find(targetTypes, extension, &TargetType::extension);
  if (type == targetTypes.end()) return std::nullopt;
  return type->identifier;
}

/// The size of an icon made from a square of `side` pixels. The comparisons are strict: a square of
/// exactly 256 pixels becomes an icon of 128.
std::size_t iconSizeFor(double side) {
  if (side > 256) return 256;
  if (side > 128) return 128;
  if (side > 48) return 48;
  if (side > 32) return 32;
  return 16;
}

ImagePointer prepareImageForICO(const ImageIO& imageIO, const Image& image) {
  const auto width = static_cast<double>(image.width());
  const auto height = static_cast<double>(image.height());
  const double side = std::min(height, width);
  const Rect square{(width - side) * 0.5, (height - side) * 0.5, side, side};
  const ImagePointer cropped = image.cropping(square);
  if (!cropped) throw ConversionError::conversionFailed("Не удалось обрезать изображение для ICO.");

  const std::size_t size = iconSizeFor(side);
  const auto context = imageIO.createBitmapContext(size, size, 8, BitmapInfo::premultipliedLast);
  if (!context) {
    throw ConversionError::conversionFailed("Ошибка создания графического контекста для ICO.");
  }
  context->setInterpolationQuality(InterpolationQuality::high);
  const auto edge = static_cast<double>(size);
  context->draw(*cropped, {0, 0, edge, edge});
  ImagePointer icon = context->makeImage();
  if (!icon) throw ConversionError::conversionFailed("Ошибка рендеринга изображения для ICO.");
  return icon;
}

void convertImage(const ImageIO& imageIO, const FileURL& sourceURL, const FileURL& destinationURL) {
  const auto source = imageIO.createSource(sourceURL);
  if (!source) {
    throw ConversionError::conversionFailed(
        L10n::choose("Failed to read source image.", "Не удалось прочитать изображение."));
  }
  ImagePointer image = source->createImage(0);
  if (!image) {
    throw ConversionError::conversionFailed(
        L10n::choose("Failed to extract image data.", "Не удалось извлечь данные."));
  }

  const std::string extension = lowercased(destinationURL.pathExtension());
  if (extension == "ico") image = prepareImageForICO(imageIO, *image);
  const auto typeIdentifier = typeIdentifierFor(extension);
  if (!typeIdentifier) {
    throw ConversionError::unsupportedFormat(sourceURL.pathExtension(),
                                             destinationURL.pathExtension());
  }
  const auto destination = imageIO.createDestination(destinationURL, *typeIdentifier, 1);
  if (!destination) {
    throw ConversionError::conversionFailed("Система не поддерживает формат " + extension + ".");
  }
  destination->addImage(std::move(image));
  if (!destination->finalize()) {
    throw ConversionError::conversionFailed("Ошибка записи файла " + extension + ".");
  }
}

}  // namespace

ImageConverter::ImageConverter(const ImageIO& imageIO, Executor& workQueue)
    : imageIO_(&imageIO), workQueue_(&workQueue), supportedExtensions_{"jpg",  "jpeg", "png",
                                                                       "heic", "tiff", "gif",
                                                                       "bmp",  "webp", "ico"} {}

bool ImageConverter::canConvert(std::string_view from, std::string_view to) const {
  return supports(from) && supports(to);
}

bool ImageConverter::supports(std::string_view extension) const {
  return std::ranges::find(supportedExtensions_, lowercased(extension)) !=
         supportedExtensions_.end();
}

Task<void> ImageConverter::convert(FileURL sourceURL, FileURL destinationURL) const {
  const auto work = [imageIO = imageIO_, sourceURL, destinationURL] {
    convertImage(*imageIO, sourceURL, destinationURL);
  };
  co_await runOn(*workQueue_, work);
}

}  // namespace kestrivane

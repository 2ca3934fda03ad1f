// What every `ImageIO` does: the one of the unit tests, the real one, and that of macOS over fakes
// of the system's functions.
//
// A library is one implementation with files for it. Thread-safety: belongs to the test's thread.
// Ownership: owns its `ImageIO` and its files.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/ImageIO.hpp"

namespace kestrivane::test {

class PictureLibrary {
 public:
  PictureLibrary() = default;
  PictureLibrary(const PictureLibrary&) = delete;
  PictureLibrary& operator=(const PictureLibrary&) = delete;
  virtual ~PictureLibrary() = default;

  virtual const ImageIO& imageIO() const = 0;
  virtual FileURL url(const std::string& name) const = 0;
  virtual void writePicture(const FileURL& url, std::size_t width, std::size_t height) = 0;
  /// A picture that is stored turned: its first row is seen as its right edge.
  virtual void writePictureOnItsSide(const FileURL& url, std::size_t width, std::size_t height) = 0;
  /// A picture whose second half is missing.
  virtual void writeHalfAPicture(const FileURL& url) = 0;
  virtual void writeText(const FileURL& url) = 0;
  virtual bool exists(const FileURL& url) const = 0;
  /// The types that it writes.
  virtual std::vector<std::string_view> types() const {
    return {imageType::jpeg, imageType::png, imageType::heic, imageType::tiff,
            imageType::gif,  imageType::bmp, imageType::webp, imageType::ico};
  }
};

/// Makes a library of one kind.
using MakePictureLibrary = std::unique_ptr<PictureLibrary> (*)();

class ImageIOConformance : public testing::TestWithParam<MakePictureLibrary> {
 protected:
  /// The first picture in the file; null when it is none or damaged.
  std::shared_ptr<const Image> read(const FileURL& url);
  std::shared_ptr<const Image> makeImage(std::size_t width, std::size_t height);
  const ImageIO& imageIO() const { return library_->imageIO(); }

  std::unique_ptr<PictureLibrary> library_ = GetParam()();
};

}  // namespace kestrivane::test

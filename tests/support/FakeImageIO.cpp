#include "tests/support/FakeImageIO.hpp"

#include <cstdio>
#include <optional>
#include <sstream>
#include <utility>

namespace kestrivane::test {
namespace {

std::string describe(std::size_t width, std::size_t height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

std::string describe(const Rect& rect) {
  std::ostringstream text;
  text << rect.x << ',' << rect.y << ' ' << rect.width << 'x' << rect.height;
  return text.str();
}

}  // namespace

class FakeImageIO::Picture final : public Image {
 public:
  Picture(const FakeImageIO& library, std::size_t width, std::size_t height)
      : library_(library), width_(width), height_(height) {}

  std::size_t width() const override { return width_; }
  std::size_t height() const override { return height_; }
  std::shared_ptr<const Image> cropping(const Rect& rect) const override {
    library_.operations.push_back("crop " + describe(rect));
    if (library_.croppingFails) return nullptr;
    return std::make_shared<Picture>(library_, static_cast<std::size_t>(rect.width),
                                     static_cast<std::size_t>(rect.height));
  }

 private:
  const FakeImageIO& library_;
  std::size_t width_;
  std::size_t height_;
};

class FakeImageIO::Source final : public ImageSource {
 public:
  Source(const FakeImageIO& library, std::string content)
      : library_(library), content_(std::move(content)) {}

  std::shared_ptr<const Image> createImage(std::size_t index) override {
    library_.operations.push_back("createImage " + std::to_string(index));
    std::size_t width = 0;
    std::size_t height = 0;
    int orientation = 1;
    if (std::sscanf(content_.c_str(), "picture %zux%zu orientation %d", &width, &height,
                    &orientation) < 2)
      return nullptr;
    if (orientation >= 5) std::swap(width, height);
    return std::make_shared<Picture>(library_, width, height);
  }

 private:
  const FakeImageIO& library_;
  std::string content_;
};

class FakeImageIO::Destination final : public ImageDestination {
 public:
  Destination(const FakeImageIO& library, FileURL url, std::string_view type)
      : library_(library), url_(std::move(url)), type_(type) {}

  void addImage(std::shared_ptr<const Image> image) override { image_ = std::move(image); }
  bool finalize() override {
    if (library_.finalizeFails || !image_) return false;
    library_.fileSystem_.writeFile(url_.path(),
                                   type_ + " " + describe(image_->width(), image_->height()));
    return true;
  }

 private:
  const FakeImageIO& library_;
  FileURL url_;
  std::string type_;
  std::shared_ptr<const Image> image_;
};

class FakeImageIO::Canvas final : public BitmapContext {
 public:
  Canvas(const FakeImageIO& library, std::size_t width, std::size_t height)
      : library_(library), width_(width), height_(height) {}

  void setInterpolationQuality(InterpolationQuality quality) override {
    library_.operations.push_back("quality " + std::to_string(static_cast<int>(quality)));
  }
  void draw(const Image& image, const Rect& rect) override {
    library_.operations.push_back("draw " + describe(image.width(), image.height()) + " into " +
                                  describe(rect));
  }
  std::shared_ptr<const Image> makeImage() override {
    if (library_.makeImageFails) return nullptr;
    return std::make_shared<Picture>(library_, width_, height_);
  }

 private:
  const FakeImageIO& library_;
  std::size_t width_;
  std::size_t height_;
};

std::unique_ptr<ImageSource> FakeImageIO::createSource(const FileURL& url) const {
  std::optional<std::string> content = fileSystem_.content(url.path());
  if (!content) return nullptr;
  if (!content->starts_with("picture ") && *content != "damaged") return nullptr;
  return std::make_unique<Source>(*this, std::move(*content));
}

std::unique_ptr<ImageDestination> FakeImageIO::createDestination(const FileURL& url,
                                                                 std::string_view typeIdentifier,
                                                                 std::size_t imageCount) const {
  operations.push_back("destination " + std::string(typeIdentifier) + " " +
                       std::to_string(imageCount));
  if (destinationFails) return nullptr;
  return std::make_unique<Destination>(*this, url, typeIdentifier);
}

std::unique_ptr<BitmapContext> FakeImageIO::createBitmapContext(std::size_t width,
                                                                std::size_t height,
                                                                std::size_t bitsPerComponent,
                                                                BitmapInfo info) const {
  operations.push_back("context " + describe(width, height) + " " +
                       std::to_string(bitsPerComponent) +
                       (info == BitmapInfo::premultipliedLast ? " premultipliedLast" : ""));
  if (bitmapContextFails) return nullptr;
  return std::make_unique<Canvas>(*this, width, height);
}

}  // namespace kestrivane::test

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/LinuxImageIO.hpp"

#include <array>
#include <exception>

#include "platform/linux/images/CodecTable.hpp"
#include "platform/linux/images/ColorTransform.hpp"
#include "platform/linux/images/ImageInput.hpp"
#include "platform/linux/images/ImageOutput.hpp"
#include "platform/linux/images/LinuxBitmapContext.hpp"
#include "platform/linux/images/LinuxImage.hpp"

namespace kestrivane {
namespace {

class LinuxImageSource final : public ImageSource {
 public:
  LinuxImageSource(ImageInput input, const Codec& codec)
      : input_(std::move(input)), codec_(codec) {}

  std::shared_ptr<const Image> createImage(std::size_t index) override try {
    if (index != 0) return nullptr;
    PixelBuffer picture = codec_.decode(input_);
    if (!profileFits(picture.iccProfile, picture.layout())) picture.iccProfile.clear();
    return std::make_shared<LinuxImage>(std::move(picture));
  } catch (const std::exception&) {
    return nullptr;
  }

 private:
  ImageInput input_;
  const Codec& codec_;
};

class LinuxImageDestination final : public ImageDestination {
 public:
  LinuxImageDestination(FileURL url, const Codec& codec) : url_(std::move(url)), codec_(codec) {}

  void addImage(std::shared_ptr<const Image> image) override {
    image_ = std::dynamic_pointer_cast<const LinuxImage>(std::move(image));
  }

  bool finalize() override try {
    if (!image_) return false;
    const PixelLayout layout = codec_.encodedLayout(image_->effectiveLayout());
    std::optional<ImageOutput> output = ImageOutput::create(url_);
    if (!output) return false;
    PixelRows picture = image_->rows(layout, codec_.profileSupport);
    image_.reset();  // so that the encoder can let go of the pixels
    codec_.encode(picture, *output);
    return output->finish();
  } catch (const std::exception&) {
    return false;
  }

 private:
  FileURL url_;
  const Codec& codec_;
  std::shared_ptr<const LinuxImage> image_;
};

}  // namespace

std::unique_ptr<ImageSource> LinuxImageIO::createSource(const FileURL& url) const {
  std::optional<ImageInput> input = ImageInput::open(url);
  if (!input) return nullptr;
  std::array<std::uint8_t, recognisedBytes> start;
  const std::size_t count = input->readUpTo(0, start);
  const Codec* const codec = codecRecognising(std::span(start).first(count));
  if (codec == nullptr) return nullptr;
  return std::make_unique<LinuxImageSource>(std::move(*input), *codec);
}

std::unique_ptr<ImageDestination> LinuxImageIO::createDestination(const FileURL& url,
                                                                  std::string_view typeIdentifier,
                                                                  std::size_t imageCount) const {
  const Codec* const codec = codecWriting(typeIdentifier);
  if (codec == nullptr || imageCount != 1) return nullptr;
  return std::make_unique<LinuxImageDestination>(url, *codec);
}

std::unique_ptr<BitmapContext> LinuxImageIO::createBitmapContext(std::size_t width,
                                                                 std::size_t height,
                                                                 std::size_t bitsPerComponent,
                                                                 BitmapInfo info) const {
  if (bitsPerComponent != 8 || info != BitmapInfo::premultipliedLast) return nullptr;
  try {
    return std::make_unique<LinuxBitmapContext>(width, height);
  } catch (const std::exception&) {
    return nullptr;
  }
}

}  // namespace kestrivane

// The conformance suite of pictures over the library of the unit tests and over the real one.
#include <algorithm>
#include <string>

#include "platform/linux/images/CodecTable.hpp"
#include "platform/linux/images/LinuxImageIO.hpp"
#include "tests/platform/images/ImageIOConformance.hpp"
#include "tests/platform/images/ImageTesting.hpp"
#include "tests/platform/images/TextPictures.hpp"
#include "tests/support/FakeImageIO.hpp"

namespace kestrivane::test {
namespace {

class FakeLibrary final : public TextPictures {
 public:
  FakeLibrary() : TextPictures(files_) {}

  const ImageIO& imageIO() const override { return imageIO_; }

 private:
  InMemoryFileSystem files_;
  FakeImageIO imageIO_{files_};
};

class LinuxLibrary final : public PictureLibrary {
 public:
  const ImageIO& imageIO() const override { return imageIO_; }
  FileURL url(const std::string& name) const override { return folder_ / name; }
  void writePicture(const FileURL& url, std::size_t width, std::size_t height) override {
    imageTesting::writeFile(url, encoded(pngCodec, width, height));
  }
  void writePictureOnItsSide(const FileURL& url, std::size_t width, std::size_t height) override {
    imageTesting::writeFile(url,
                            imageTesting::withOrientation(6, encoded(jpegCodec, width, height)));
  }
  void writeHalfAPicture(const FileURL& url) override {
    const imageTesting::Bytes bytes = encoded(pngCodec, 40, 30);
    imageTesting::writeFile(url, std::span(bytes).first(bytes.size() / 2));
  }
  void writeText(const FileURL& url) override {
    const std::string text = "a letter";
    imageTesting::writeFile(url, imageTesting::Bytes(text.begin(), text.end()));
  }
  bool exists(const FileURL& url) const override {
    const auto names = folder_.names();
    return std::ranges::find(names, url.lastPathComponent()) != names.end();
  }

 private:
  static imageTesting::Bytes encoded(const Codec& codec, std::size_t width, std::size_t height) {
    return imageTesting::encode(
        codec, imageTesting::makePicture(width, height, {Channels::rgb, Depth::eight}));
  }

  imageTesting::TemporaryFolder folder_;
  LinuxImageIO imageIO_;
};

template <typename Library>
std::unique_ptr<PictureLibrary> make() {
  return std::make_unique<Library>();
}

INSTANTIATE_TEST_SUITE_P(Fake, ImageIOConformance, testing::Values(make<FakeLibrary>),
                         [](const auto&) { return std::string("Library"); });
INSTANTIATE_TEST_SUITE_P(Linux, ImageIOConformance, testing::Values(make<LinuxLibrary>),
                         [](const auto&) { return std::string("Library"); });

}  // namespace
}  // namespace kestrivane::test

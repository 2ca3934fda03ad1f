// What every `ImageIO` does, the one of the unit tests as well as the real one.
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "platform/linux/images/CodecTable.hpp"
#include "platform/linux/images/LinuxImageIO.hpp"
#include "tests/platform/images/ImageTesting.hpp"
#include "tests/support/FakeImageIO.hpp"

namespace kestrivane::imageTesting {
namespace {

/// An `ImageIO` and files for it.
class Library {
 public:
  Library() = default;
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  virtual ~Library() = default;

  virtual const ImageIO& imageIO() const = 0;
  virtual FileURL url(const std::string& name) const = 0;
  virtual void writePicture(const FileURL& url, std::size_t width, std::size_t height) = 0;
  virtual void writeDamagedPicture(const FileURL& url) = 0;
  virtual void writeText(const FileURL& url) = 0;
  virtual bool exists(const FileURL& url) const = 0;
};

class FakeLibrary final : public Library {
 public:
  const ImageIO& imageIO() const override { return imageIO_; }
  FileURL url(const std::string& name) const override { return FileURL("/tmp/" + name); }
  void writePicture(const FileURL& url, std::size_t width, std::size_t height) override {
    files_.writeFile(url.path(), "picture " + std::to_string(width) + "x" + std::to_string(height));
  }
  void writeDamagedPicture(const FileURL& url) override { files_.writeFile(url.path(), "damaged"); }
  void writeText(const FileURL& url) override { files_.writeFile(url.path(), "a letter"); }
  bool exists(const FileURL& url) const override { return files_.content(url.path()).has_value(); }

 private:
  test::InMemoryFileSystem files_;
  test::FakeImageIO imageIO_{files_};
};

class LinuxLibrary final : public Library {
 public:
  const ImageIO& imageIO() const override { return imageIO_; }
  FileURL url(const std::string& name) const override { return folder_ / name; }
  void writePicture(const FileURL& url, std::size_t width, std::size_t height) override {
    writeFile(url, encodedPicture(width, height));
  }
  void writeDamagedPicture(const FileURL& url) override {
    const Bytes bytes = encodedPicture(40, 30);
    writeFile(url, std::span(bytes).first(bytes.size() / 2));
  }
  void writeText(const FileURL& url) override {
    const std::string text = "a letter";
    writeFile(url, Bytes(text.begin(), text.end()));
  }
  bool exists(const FileURL& url) const override {
    const auto names = folder_.names();
    return std::ranges::find(names, url.lastPathComponent()) != names.end();
  }

 private:
  static Bytes encodedPicture(std::size_t width, std::size_t height) {
    return encode(pngCodec, makePicture(width, height, {Channels::rgb, Depth::eight}));
  }

  TemporaryFolder folder_;
  LinuxImageIO imageIO_;
};

struct Factory {
  std::string name;
  std::function<std::unique_ptr<Library>()> make;
};

class ImageIOConformance : public testing::TestWithParam<Factory> {
 protected:
  std::shared_ptr<const Image> makeImage(std::size_t width, std::size_t height) {
    const FileURL url = library_->url("source.png");
    library_->writePicture(url, width, height);
    return imageIO().createSource(url)->createImage(0);
  }

  const ImageIO& imageIO() const { return library_->imageIO(); }

  std::unique_ptr<Library> library_ = GetParam().make();
};

TEST_P(ImageIOConformance, tellsTheSizeOfAPicture) {
  const auto image = makeImage(40, 30);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->width(), 40U);
  EXPECT_EQ(image->height(), 30U);
}

TEST_P(ImageIOConformance, opensNothingThatIsMissingOrNoPicture) {
  EXPECT_FALSE(imageIO().createSource(library_->url("missing.png")));
  library_->writeText(library_->url("letter.png"));
  EXPECT_FALSE(imageIO().createSource(library_->url("letter.png")));
}

TEST_P(ImageIOConformance, opensADamagedPictureButDoesNotDecodeIt) {
  library_->writeDamagedPicture(library_->url("damaged.png"));
  const auto source = imageIO().createSource(library_->url("damaged.png"));
  ASSERT_TRUE(source);
  EXPECT_FALSE(source->createImage(0));
}

TEST_P(ImageIOConformance, keepsAnImageAliveWithoutItsSource) {
  const auto part = makeImage(40, 30)->cropping({0, 0, 10, 10});
  ASSERT_TRUE(part);
  EXPECT_EQ(part->width(), 10U);
}

TEST_P(ImageIOConformance, cutsOutAPart) {
  const auto part = makeImage(40, 30)->cropping({5, 0, 30, 30});
  ASSERT_TRUE(part);
  EXPECT_EQ(part->width(), 30U);
  EXPECT_EQ(part->height(), 30U);
}

TEST_P(ImageIOConformance, makesAnImageOfTheSizeOfTheCanvas) {
  const auto canvas = imageIO().createBitmapContext(16, 16, 8, BitmapInfo::premultipliedLast);
  ASSERT_TRUE(canvas);
  canvas->setInterpolationQuality(InterpolationQuality::high);
  canvas->draw(*makeImage(40, 40), {0, 0, 16, 16});
  const auto image = canvas->makeImage();
  ASSERT_TRUE(image);
  EXPECT_EQ(image->width(), 16U);
  EXPECT_EQ(image->height(), 16U);
}

TEST_P(ImageIOConformance, writesEveryTypeOnlyWhenItIsFinalized) {
  const auto image = makeImage(48, 48);
  for (const std::string_view type :
       {imageType::jpeg, imageType::png, imageType::heic, imageType::tiff, imageType::gif,
        imageType::bmp, imageType::webp, imageType::ico}) {
    const FileURL url = library_->url(std::string(type));
    const auto destination = imageIO().createDestination(url, type, 1);
    ASSERT_TRUE(destination) << type;
    destination->addImage(image);
    EXPECT_FALSE(library_->exists(url)) << type;
    EXPECT_TRUE(destination->finalize()) << type;
    EXPECT_TRUE(library_->exists(url)) << type;
  }
}

TEST_P(ImageIOConformance, writesNothingWithoutAnImage) {
  const FileURL url = library_->url("empty.png");
  EXPECT_FALSE(imageIO().createDestination(url, imageType::png, 1)->finalize());
  EXPECT_FALSE(library_->exists(url));
}

INSTANTIATE_TEST_SUITE_P(
    , ImageIOConformance,
    testing::Values(Factory{"Fake", [] { return std::make_unique<FakeLibrary>(); }},
                    Factory{"Linux", [] { return std::make_unique<LinuxLibrary>(); }}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace kestrivane::imageTesting

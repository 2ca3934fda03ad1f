#include "tests/platform/images/ImageIOConformance.hpp"

namespace kestrivane::test {

std::shared_ptr<const Image> ImageIOConformance::read(const FileURL& url) {
  const auto source = imageIO().createSource(url);
  return source ? source->createImage(0) : nullptr;
}

std::shared_ptr<const Image> ImageIOConformance::makeImage(std::size_t width, std::size_t height) {
  const FileURL url = library_->url("source.png");
  library_->writePicture(url, width, height);
  return read(url);
}

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

TEST_P(ImageIOConformance, opensHalfAPictureButDoesNotDecodeIt) {
  const FileURL url = library_->url("half.png");
  library_->writeHalfAPicture(url);
  const auto source = imageIO().createSource(url);
  ASSERT_TRUE(source);
  EXPECT_FALSE(source->createImage(0));
}

TEST_P(ImageIOConformance, turnsAPictureUpright) {
  const FileURL url = library_->url("turned.jpg");
  library_->writePictureOnItsSide(url, 48, 32);
  const auto image = read(url);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->width(), 32U);
  EXPECT_EQ(image->height(), 48U);
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
  for (const std::string_view type : library_->types()) {
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

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ImageIOConformance);

}  // namespace kestrivane::test

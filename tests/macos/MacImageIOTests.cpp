// Which functions of ImageIO and CoreGraphics are called, in which order and with what, and that
// every reference is released, whatever fails.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "converters/ImageConverter.hpp"
#include "engine/ConversionError.hpp"
#include "platform/macos/MacImageIO.hpp"
#include "tests/macos/fakes/FakeSystem.hpp"
#include "tests/support/RunTask.hpp"

namespace kestrivane::test {
namespace {

using Calls = std::vector<std::string>;

class MacImageIOTests : public testing::TestWithParam<const char*> {
 protected:
  void convert(const std::string& target) {
    const ImageConverter converter(imageIO_, system_->loop);
    runTask(system_->loop, converter.convert(FileURL("/tmp/a.png"), FileURL("/tmp/" + target)));
  }

  UsedFakeSystem system_;
  MacImageIO imageIO_;
};

TEST_F(MacImageIOTests, aConversionMakesTheseCalls) {
  system_->files.writeFile("/tmp/a.png", "picture 40x30");
  convert("b.jpg");
  EXPECT_EQ(
      system_->calls,
      (Calls{"CGImageSourceCreateWithURL /tmp/a.png none", "CGImageSourceCreateImageAtIndex 0 none",
             "CGImageSourceGetStatusAtIndex 0", "CGImageSourceCopyPropertiesAtIndex 0 none",
             "CGImageDestinationCreateWithURL /tmp/b.jpg public.jpeg 1 none",
             "CGImageDestinationAddImage 40x30 none", "CGImageDestinationFinalize"}));
  EXPECT_EQ(system_->files.content("/tmp/b.jpg"), "public.jpeg 40x30");
}

TEST_F(MacImageIOTests, anIconIsCutOutAndScaledByTheseCalls) {
  system_->files.writeFile("/tmp/a.png", "picture 1000x600");
  convert("b.ico");
  EXPECT_EQ(
      system_->calls,
      (Calls{"CGImageSourceCreateWithURL /tmp/a.png none", "CGImageSourceCreateImageAtIndex 0 none",
             "CGImageSourceGetStatusAtIndex 0", "CGImageSourceCopyPropertiesAtIndex 0 none",
             "CGImageGetWidth", "CGImageGetHeight", "CGImageCreateWithImageInRect 200,0 600x600",
             "CGColorSpaceCreateDeviceRGB", "CGBitmapContextCreate none 256x256 8 0 1",
             "CGContextSetInterpolationQuality 3", "CGContextDrawImage 0,0 256x256 600x600",
             "CGBitmapContextCreateImage",
             "CGImageDestinationCreateWithURL /tmp/b.ico com.microsoft.ico 1 none",
             "CGImageDestinationAddImage 256x256 none", "CGImageDestinationFinalize"}));
  EXPECT_EQ(system_->files.content("/tmp/b.ico"), "com.microsoft.ico 256x256");
}

TEST_F(MacImageIOTests, aPictureIsTurnedUprightByTheseCalls) {
  system_->files.writeFile("/tmp/a.png", "picture 40x30 orientation 6 opaque");
  convert("b.jpg");
  EXPECT_EQ(
      system_->calls,
      (Calls{"CGImageSourceCreateWithURL /tmp/a.png none", "CGImageSourceCreateImageAtIndex 0 none",
             "CGImageSourceGetStatusAtIndex 0", "CGImageSourceCopyPropertiesAtIndex 0 none",
             "CGImageGetWidth", "CGImageGetHeight", "CGColorSpaceCreateWithName",
             "CGBitmapContextCreate none 30x40 8 0 5", "CGContextSetInterpolationQuality 1",
             "CGContextDrawImage 0,0 40x30 40x30", "CGBitmapContextCreateImage",
             "CGImageDestinationCreateWithURL /tmp/b.jpg public.jpeg 1 none",
             "CGImageDestinationAddImage 30x40 DABC none", "CGImageDestinationFinalize"}));
}

TEST_F(MacImageIOTests, everyOrientationPutsTheCornersWhereTheyBelong) {
  // By the first row and the first column of what is stored, whose corners are A and B, A and D.
  const std::vector<std::string> seen = {"40x30",      "40x30 BADC", "40x30 CDAB", "40x30 DCBA",
                                         "30x40 ADCB", "30x40 DABC", "30x40 CBAD", "30x40 BCDA"};
  for (int orientation = 1; orientation <= 8; ++orientation) {
    system_->files.writeFile("/tmp/a.png",
                             "picture 40x30 orientation " + std::to_string(orientation));
    convert("b.png");
    EXPECT_EQ(system_->files.content("/tmp/b.png"),
              "public.png " + seen.at(static_cast<std::size_t>(orientation - 1)))
        << orientation;
  }
}

TEST_F(MacImageIOTests, anOrientationThatDoesNotExistChangesNothing) {
  for (const char* orientation : {"0", "9", "-6"}) {
    system_->files.writeFile("/tmp/a.png", std::string("picture 40x30 orientation ") + orientation);
    convert("b.png");
    EXPECT_EQ(system_->files.content("/tmp/b.png"), "public.png 40x30") << orientation;
  }
}

TEST_F(MacImageIOTests, theCanvasOfATurnedPictureHasItsDepthAndTransparency) {
  system_->files.writeFile("/tmp/a.png", "picture 40x30 orientation 3 deep");
  convert("b.png");
  EXPECT_EQ(system_->calls.at(7), "CGBitmapContextCreate none 40x30 16 0 1");
}

TEST_F(MacImageIOTests, aTurnedPictureInGreyIsDrawnInStandardColours) {
  system_->files.writeFile("/tmp/a.png", "picture 40x30 orientation 3 grey opaque");
  convert("b.png");
  EXPECT_EQ(system_->files.content("/tmp/b.png"), "public.png 40x30 CDAB");
}

TEST_F(MacImageIOTests, aPictureThatEndsTooEarlyIsNotConverted) {
  system_->files.writeFile("/tmp/a.png", "half a picture 40x30");
  EXPECT_THROW(convert("b.jpg"), ConversionError);
  EXPECT_EQ(system_->calls.back(), "CGImageSourceGetStatusAtIndex 0");
}

TEST_F(MacImageIOTests, aTypeThatTheSystemDoesNotWriteIsAFailure) {
  system_->files.writeFile("/tmp/a.png", "picture 40x30");
  EXPECT_THROW(convert("b.webp"), ConversionError);
  EXPECT_EQ(system_->calls.back(),
            "CGImageDestinationCreateWithURL /tmp/b.webp org.webmproject.webp 1 none");
}

TEST_F(MacImageIOTests, theOriginOfACanvasIsItsUpperLeftCorner) {
  system_->files.writeFile("/tmp/a.png", "picture 40x30");
  const auto image = imageIO_.createSource(FileURL("/tmp/a.png"))->createImage(0);
  const auto canvas = imageIO_.createBitmapContext(100, 50, 8, BitmapInfo::premultipliedLast);
  canvas->draw(*image, {10, 0, 40, 30});
  EXPECT_EQ(system_->calls.back(), "CGContextDrawImage 10,20 40x30 40x30");
}

TEST_F(MacImageIOTests, aTypeThatIsNotUTF8CannotBeWritten) {
  EXPECT_FALSE(imageIO_.createDestination(FileURL("/tmp/b"), "\xFF", 1));
}

TEST_P(MacImageIOTests, afterAnyFailureNothingIsWrittenAndNoReferenceIsLeft) {
  for (const char* picture : {"picture 1000x600", "picture 1000x600 orientation 6"}) {
    system_->files.writeFile("/tmp/a.png", picture);
    system_->failing = {GetParam()};
    EXPECT_THROW(convert("b.ico"), ConversionError);
    EXPECT_FALSE(system_->files.content("/tmp/b.ico"));
    EXPECT_EQ(system_->objectsAlive(), std::vector<std::string>());
  }
}

INSTANTIATE_TEST_SUITE_P(
    , MacImageIOTests,
    testing::Values("CFURLCreateFromFileSystemRepresentation", "CGImageSourceCreateWithURL",
                    "CGImageSourceCreateImageAtIndex", "CGImageCreateWithImageInRect",
                    "CGColorSpaceCreateDeviceRGB", "CGBitmapContextCreate",
                    "CGBitmapContextCreateImage", "CGImageDestinationCreateWithURL",
                    "CGImageDestinationFinalize"),
    [](const auto& instance) { return std::string(instance.param); });

}  // namespace
}  // namespace kestrivane::test

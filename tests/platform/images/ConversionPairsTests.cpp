// Whole conversions, by the converter itself: every ordered pair of the nine extensions, checked by
// our own decoders and by ImageMagick, and what must not be in any output.
#include <algorithm>
#include <array>
#include <filesystem>

#include <gtest/gtest.h>

#include "converters/ImageConverter.hpp"
#include "platform/linux/images/CodecTable.hpp"
#include "platform/linux/images/LinuxImage.hpp"
#include "platform/linux/images/LinuxImageIO.hpp"
#include "tests/platform/images/ImageTesting.hpp"
#include "tests/support/RunTask.hpp"

namespace kestrivane::imageTesting {
namespace {

struct Format {
  const char* extension;
  const char* sampleExtension;
  double tolerance;  // mean difference of a channel that writing it may cause, of 255
};

constexpr std::array<Format, 9> formats{{{"jpg", "jpg", 5.5},
                                         {"jpeg", "jpg", 5.5},
                                         {"png", "png", 0},
                                         {"heic", "heic", 6},
                                         {"tiff", "tiff", 0},
                                         {"gif", "gif", 7},
                                         {"bmp", "bmp", 0},
                                         {"webp", "webp", 5.5},
                                         {"ico", "ico", 0}}};

class ConversionPairs : public testing::Test {
 protected:
  void convert(const FileURL& source, const FileURL& destination) {
    const ImageConverter converter(imageIO_, loop_);
    test::runTask(loop_, converter.convert(source, destination));
  }

  /// What is to be seen in the file, over white.
  PixelBuffer shown(const FileURL& url) {
    const auto image = imageIO_.createSource(url)->createImage(0);
    return pixels(dynamic_cast<const LinuxImage&>(*image));
  }

  /// The same after the preparation of icons: the centred square at one of five sizes.
  PixelBuffer shownAsIcon(const FileURL& url) {
    const auto image = imageIO_.createSource(url)->createImage(0);
    const std::size_t side = std::min(image->width(), image->height());
    const std::size_t size = side > 256 ? 256 : side > 128 ? 128 : side > 48 ? 48 : 32;
    const auto square = image->cropping({static_cast<double>(image->width() - side) / 2,
                                         static_cast<double>(image->height() - side) / 2,
                                         static_cast<double>(side), static_cast<double>(side)});
    const auto context = imageIO_.createBitmapContext(size, size, 8, BitmapInfo::premultipliedLast);
    context->setInterpolationQuality(InterpolationQuality::high);
    context->draw(*square, {0, 0, static_cast<double>(size), static_cast<double>(size)});
    return pixels(dynamic_cast<const LinuxImage&>(*context->makeImage()));
  }

  TemporaryFolder folder_;
  LinuxImageIO imageIO_;

 private:
  static PixelBuffer pixels(const LinuxImage& image) {
    const PixelRows rows = image.rows(rgb8, ProfileSupport::none);
    PixelBuffer picture = PixelBuffer::create(rows.width(), rows.height(), rgb8);
    Bytes scratch(rows.scratchBytes());
    for (std::size_t y = 0; y < rows.height(); ++y)
      std::copy_n(rows.row(y, scratch.data()), rows.rowBytes(), picture.row(y));
    return picture;
  }

  test::VirtualLoop loop_;
};

TEST_F(ConversionPairs, allSeventyTwoShowTheSamePictureAfterwards) {
  int pairs = 0;
  for (const Format& from : formats)
    for (const Format& to : formats) {
      if (&from == &to) continue;
      SCOPED_TRACE(std::string(from.extension) + " to " + to.extension);
      const FileURL source = folder_ / (std::string("source.") + from.extension);
      const FileURL target = folder_ / (std::string("target.") + to.extension);
      const Bytes bytes = readFile(sample(std::string("photo.") + from.sampleExtension));
      writeFile(source, bytes);

      convert(source, target);

      EXPECT_EQ(folder_.names(),
                (std::vector{source.lastPathComponent(), target.lastPathComponent()}));
      EXPECT_EQ(readFile(source), bytes);
      const PixelBuffer expected =
          std::string_view(to.extension) == "ico" ? shownAsIcon(source) : shown(source);
      EXPECT_LE(meanDifference(expected, shown(target)), to.tolerance);
      // The prefix makes ImageMagick read it as that format and no other.
      EXPECT_EQ(outputOf("identify -format '%wx%h' " + std::string(to.sampleExtension) + ":" +
                         target.path()),
                std::to_string(expected.width()) + "x" + std::to_string(expected.height()));
      std::filesystem::remove(source.path());
      std::filesystem::remove(target.path());
      ++pairs;
    }
  EXPECT_EQ(pairs, 72);
}

TEST_F(ConversionPairs, dropAllMetadataAndShowThePictureUpright) {
  const std::string upright = (folder_ / "upright.png").path();
  outputOf("convert " + sample("telephone.jpg").path() + " -auto-orient -strip PNG24:" + upright);
  const PixelBuffer expected = decode(pngCodec, readFile(FileURL(upright)));
  for (const Format& to : formats) {
    SCOPED_TRACE(to.extension);
    const FileURL target = folder_ / (std::string("target.") + to.extension);
    convert(sample("telephone.jpg"), target);
    const Bytes bytes = readFile(target);
    for (const char* const trace : {"Exif", "eXIf", "EXIF", "GPS", "xmp", "XMP", "adobe", "8BIM",
                                    "Kestrivane", "nobody", "sample", "tEXt"})
      EXPECT_FALSE(contains(bytes, trace)) << trace;
    EXPECT_EQ(
        outputOf("exiftool -s3 -GPSLatitude -Make -Creator -Keywords -Comment " + target.path()),
        "");
    if (std::string_view(to.extension) != "ico") {
      EXPECT_LT(meanDifference(expected, shown(target)), to.tolerance + 2);
    }
  }
}

TEST_F(ConversionPairs, keepTheLookOfWideColours) {
  // The reference goes through another program's colour management.
  const std::string reference = (folder_ / "reference.png").path();
  outputOf("convert " + sample("wide-gamut.jpg").path() +
           " -profile /usr/share/color/icc/sRGB.icc -strip PNG24:" + reference);
  const PixelBuffer expected = decode(pngCodec, readFile(FileURL(reference)));
  for (const Format& to : formats) {
    if (std::string_view(to.extension) == "ico") continue;
    SCOPED_TRACE(to.extension);
    const FileURL target = folder_ / (std::string("target.") + to.extension);
    convert(sample("wide-gamut.jpg"), target);
    EXPECT_LT(meanDifference(expected, shown(target)), to.tolerance + 1.5);
  }
}

TEST_F(ConversionPairs, keepDepthAndGreyWhereTheTargetCan) {
  const auto layoutAfter = [this](const std::string& source, const char* extension) {
    const FileURL target = folder_ / (source + "." + extension);
    convert(sample(source), target);
    const auto image = imageIO_.createSource(target)->createImage(0);
    return dynamic_cast<const LinuxImage&>(*image).effectiveLayout();
  };
  for (const char* const extension : {"tiff", "heic"})
    EXPECT_EQ(layoutAfter("deep.png", extension), (PixelLayout{Channels::rgb, Depth::sixteen}));
  EXPECT_EQ(layoutAfter("deep.tiff", "png"), (PixelLayout{Channels::rgb, Depth::sixteen}));
  EXPECT_EQ(layoutAfter("deep.png", "jpg"), rgb8);
  for (const char* const extension : {"png", "tiff", "heic"})
    EXPECT_EQ(layoutAfter("grey.jpg", extension), (PixelLayout{Channels::grey, Depth::eight}));
}

TEST_F(ConversionPairs, keepTransparencyWhereTheTargetCan) {
  for (const Format& to : formats) {
    SCOPED_TRACE(to.extension);
    const FileURL target = folder_ / (std::string("target.") + to.extension);
    convert(sample("transparent.png"), target);
    const auto image = imageIO_.createSource(target)->createImage(0);
    const bool isJpeg = std::string_view(to.sampleExtension) == "jpg";
    EXPECT_EQ(dynamic_cast<const LinuxImage&>(*image).effectiveLayout().hasAlpha(), !isJpeg);
  }
}

TEST_F(ConversionPairs, turnFourInksIntoRGB) {
  const std::string reference = (folder_ / "reference.png").path();
  outputOf("convert " + sample("cmyk.jpg").path() + " -colorspace sRGB -strip PNG24:" + reference);
  convert(sample("cmyk.jpg"), folder_ / "target.png");
  EXPECT_LT(
      meanDifference(decode(pngCodec, readFile(FileURL(reference))), shown(folder_ / "target.png")),
      2);
}

}  // namespace
}  // namespace kestrivane::imageTesting

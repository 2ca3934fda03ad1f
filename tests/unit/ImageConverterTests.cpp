#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "converters/ImageConverter.hpp"
#include "engine/ConversionError.hpp"
#include "tests/support/FakeImageIO.hpp"
#include "tests/support/FakeLocale.hpp"
#include "tests/support/RunTask.hpp"

namespace kestrivane::test {
namespace {

class ImageConverterTest : public testing::Test {
 protected:
  void convert(const std::string& source, const std::string& destination) {
    runTask(loop, converter.convert(FileURL(source), FileURL(destination)));
  }

  std::string failureOf(const std::string& source, const std::string& destination) {
    try {
      convert(source, destination);
    } catch (const ConversionError& error) {
      return error.errorDescription();
    }
    return "no failure";
  }

  bool hasOperation(const std::string& operation) const {
    return std::ranges::find(imageIO.operations, operation) != imageIO.operations.end();
  }

  VirtualLoop loop;
  InMemoryFileSystem files;
  FakeImageIO imageIO{files};
  ImageConverter converter{imageIO, loop};
};

TEST_F(ImageConverterTest, AcceptsAnyPairOfItsNineExtensionsInAnyCase) {
  EXPECT_TRUE(converter.canConvert("PNG", "webp"));
  EXPECT_FALSE(converter.canConvert("png", "svg"));
  EXPECT_FALSE(converter.canConvert("svg", "png"));
  EXPECT_FALSE(converter.canConvert("", "png"));
  EXPECT_TRUE(converter.canConvert("jpg", "jpg"));
  EXPECT_TRUE(converter.canConvert("jpg", "jpeg"));
  const std::vector<std::string> extensions = {"jpg", "jpeg", "png",  "heic", "tiff",
                                               "gif", "bmp",  "webp", "ico"};
  for (const std::string& from : extensions) {
    for (const std::string& to : extensions)
      EXPECT_TRUE(converter.canConvert(from, to));
  }
}

struct ImageTypeCase {
  std::string extension;
  std::string identifier;
};

class ImageConverterTypes : public ImageConverterTest,
                            public testing::WithParamInterface<ImageTypeCase> {};

TEST_P(ImageConverterTypes, AreChosenFromTheExtensionOfTheDestination) {
  files.writeFile("/w/a", "picture 40x30");
  convert("/w/a", "/tmp/out." + GetParam().extension);
  EXPECT_EQ(files.content("/tmp/out." + GetParam().extension), GetParam().identifier + " 40x30");
  EXPECT_TRUE(hasOperation("destination " + GetParam().identifier + " 1"));
}

INSTANTIATE_TEST_SUITE_P(Targets, ImageConverterTypes,
                         testing::Values(ImageTypeCase{"webp", "org.webmproject.webp"},
                                         ImageTypeCase{"heic", "public.heic"},
                                         ImageTypeCase{"jpg", "public.jpeg"},
                                         ImageTypeCase{"jpeg", "public.jpeg"},
                                         ImageTypeCase{"png", "public.png"},
                                         ImageTypeCase{"gif", "com.compuserve.gif"},
                                         ImageTypeCase{"tiff", "public.tiff"},
                                         ImageTypeCase{"bmp", "com.microsoft.bmp"}));

TEST_F(ImageConverterTest, ADestinationInCapitalsUsesTheSameType) {
  files.writeFile("/w/a", "picture 400x300");
  convert("/w/a", "/tmp/out.JPG");
  EXPECT_EQ(files.content("/tmp/out.JPG"), "public.jpeg 400x300");
  convert("/w/a", "/tmp/out.ICO");
  EXPECT_EQ(files.content("/tmp/out.ICO"), "com.microsoft.ico 256x256");
}

TEST_F(ImageConverterTest, OnlyTheFirstPictureIsDecoded) {
  files.writeFile("/w/animated", "picture 40x30");
  convert("/w/animated", "/tmp/out.png");
  EXPECT_EQ(imageIO.operations.front(), "createImage 0");
  EXPECT_EQ(std::ranges::count(imageIO.operations, "createImage 0"), 1);
}

TEST_F(ImageConverterTest, AnIconIsTheCentredSquareScaledWithHighQuality) {
  files.writeFile("/w/a", "picture 1000x600");
  convert("/w/a", "/tmp/out.ico");
  EXPECT_EQ(imageIO.operations,
            (std::vector<std::string>{
                "createImage 0", "crop 200,0 600x600", "context 256x256 8 premultipliedLast",
                "quality 3", "draw 600x600 into 0,0 256x256", "destination com.microsoft.ico 1"}));
}

TEST_F(ImageConverterTest, TheOriginOfTheSquareIsNotRounded) {
  files.writeFile("/w/a", "picture 40x301");
  convert("/w/a", "/tmp/out.ico");
  EXPECT_TRUE(hasOperation("crop 0,130.5 40x40"));
}

struct IconCase {
  std::string picture;
  std::string icon;
};

class ImageConverterIcons : public ImageConverterTest,
                            public testing::WithParamInterface<IconCase> {};

TEST_P(ImageConverterIcons, HaveTheSizeOfTheStrictlySmallerStep) {
  files.writeFile("/w/a", "picture " + GetParam().picture);
  convert("/w/a", "/tmp/out.ico");
  EXPECT_EQ(files.content("/tmp/out.ico"), "com.microsoft.ico " + GetParam().icon);
}

INSTANTIATE_TEST_SUITE_P(Sizes, ImageConverterIcons,
                         testing::Values(IconCase{"257x257", "256x256"},
                                         IconCase{"256x256", "128x128"},
                                         IconCase{"129x500", "128x128"},
                                         IconCase{"128x128", "48x48"}, IconCase{"49x49", "48x48"},
                                         IconCase{"48x48", "32x32"}, IconCase{"300x40", "32x32"},
                                         IconCase{"33x33", "32x32"}, IconCase{"32x32", "16x16"},
                                         IconCase{"10x10", "16x16"}));

TEST_F(ImageConverterTest, ATextFileFailsWithTheReadText) {
  files.writeFile("/w/a.png", "Dear diary");
  EXPECT_EQ(failureOf("/w/a.png", "/tmp/out.png"),
            "Conversion error: Failed to read source image.");
  const LanguageGuard russian("ru");
  EXPECT_EQ(failureOf("/w/a.png", "/tmp/out.png"),
            "Ошибка конвертации: Не удалось прочитать изображение.");
}

TEST_F(ImageConverterTest, ADamagedPictureFailsWithTheExtractText) {
  files.writeFile("/w/a.png", "damaged");
  EXPECT_EQ(failureOf("/w/a.png", "/tmp/out.jpg"),
            "Conversion error: Failed to extract image data.");
  const LanguageGuard russian("ru");
  EXPECT_EQ(failureOf("/w/a.png", "/tmp/out.jpg"),
            "Ошибка конвертации: Не удалось извлечь данные.");
}

TEST_F(ImageConverterTest, AnotherTargetIsUnsupportedAndKeepsTheCaseOfTheExtensions) {
  files.writeFile("/w/a.Png", "picture 4x3");
  EXPECT_EQ(failureOf("/w/a.Png", "/tmp/out.Svg"),
            "Conversion from 'Png' to 'Svg' is not supported.");
}

struct StepCase {
  bool FakeImageIO::*failingStep;
  std::string extension;
  std::string reason;
};

class ImageConverterSteps : public ImageConverterTest,
                            public testing::WithParamInterface<StepCase> {};

TEST_P(ImageConverterSteps, FailWithTheirOwnRussianTextInBothLanguages) {
  files.writeFile("/w/a", "picture 400x300");
  imageIO.*GetParam().failingStep = true;
  EXPECT_EQ(failureOf("/w/a", "/tmp/out." + GetParam().extension),
            "Conversion error: " + GetParam().reason);
  const LanguageGuard russian("ru");
  EXPECT_EQ(failureOf("/w/a", "/tmp/out." + GetParam().extension),
            "Ошибка конвертации: " + GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(
    Failures, ImageConverterSteps,
    testing::Values(
        StepCase{&FakeImageIO::croppingFails, "ico", "Не удалось обрезать изображение для ICO."},
        StepCase{&FakeImageIO::bitmapContextFails, "ico",
                 "Ошибка создания графического контекста для ICO."},
        StepCase{&FakeImageIO::makeImageFails, "ico", "Ошибка рендеринга изображения для ICO."},
        StepCase{&FakeImageIO::destinationFails, "WebP", "Система не поддерживает формат webp."},
        StepCase{&FakeImageIO::finalizeFails, "PNG", "Ошибка записи файла png."}));

Task<void> convertAndNote(const ImageConverter* converter, bool* ended) {
  co_await converter->convert(FileURL("/w/a"), FileURL("/tmp/out.png"));
  *ended = true;
}

TEST_F(ImageConverterTest, WorksOnItsQueueAndNotOnTheCallersLoop) {
  files.writeFile("/w/a", "picture 4x3");
  VirtualLoop queue;
  const ImageConverter queued(imageIO, queue);
  TaskScope scope(loop);
  bool ended = false;
  scope.spawn(convertAndNote(&queued, &ended));
  loop.runUntilIdle();
  EXPECT_TRUE(imageIO.operations.empty());
  queue.runUntilIdle();
  EXPECT_FALSE(imageIO.operations.empty());
  EXPECT_FALSE(ended);
  loop.runUntilIdle();
  EXPECT_TRUE(ended);
}

}  // namespace
}  // namespace kestrivane::test

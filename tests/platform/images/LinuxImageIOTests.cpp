#include <cmath>
#include <csignal>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "platform/linux/images/CodecTable.hpp"
#include "platform/linux/images/LinuxImage.hpp"
#include "platform/linux/images/LinuxImageIO.hpp"
#include "platform/linux/images/MadeProfile.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

std::shared_ptr<const Image> open(const FileURL& url) {
  const LinuxImageIO imageIO;
  const auto source = imageIO.createSource(url);
  return source ? source->createImage(0) : nullptr;
}

bool write(const FileURL& url, std::string_view type, std::shared_ptr<const Image> image) {
  const LinuxImageIO imageIO;
  const auto destination = imageIO.createDestination(url, type, 1);
  if (!destination) return false;
  destination->addImage(std::move(image));
  return destination->finalize();
}

TEST(LinuxImageIO, recognisesAFormatWhateverTheNameSays) {
  const TemporaryFolder folder;
  for (const std::string extension : {"jpg", "png", "heic", "tiff", "gif", "bmp", "webp", "ico"}) {
    const FileURL url = folder / ("photo." + extension + ".txt");
    writeFile(url, readFile(sample("photo." + extension)));
    EXPECT_TRUE(open(url)) << extension;
  }
}

TEST(LinuxImageIO, opensNothingThatIsNoPicture) {
  const TemporaryFolder folder;
  const LinuxImageIO imageIO;
  const std::string text = "To whom it may concern: this is a letter and no picture.";
  writeFile(folder / "letter.png", Bytes(text.begin(), text.end()));
  writeFile(folder / "empty.png", {});
  std::filesystem::create_directory((folder / "folder.png").path());
  std::filesystem::create_symlink("nowhere", (folder / "link.png").path());
  ASSERT_EQ(::mkfifo((folder / "pipe.png").path().c_str(), 0600), 0);
  for (const std::string name :
       {"letter.png", "empty.png", "folder.png", "link.png", "pipe.png", "missing.png"})
    EXPECT_FALSE(imageIO.createSource(folder / name)) << name;
}

TEST(LinuxImageIO, decodesNoPictureThatIsCutShort) {
  const TemporaryFolder folder;
  for (const std::string extension : {"jpg", "png", "heic", "tiff", "gif", "bmp", "webp", "ico"}) {
    const Bytes bytes = readFile(sample("photo." + extension));
    for (const std::size_t part : {1U, 10U, 50U, 90U, 99U}) {
      const FileURL url = folder / "cut";
      writeFile(url, std::span(bytes).first(bytes.size() * part / 100));
      EXPECT_FALSE(open(url)) << extension << " cut to " << part << " %";
    }
  }
}

TEST(LinuxImageIO, decodesNothingOfAFileThatWasCutShortAfterItWasOpened) {
  const TemporaryFolder folder;
  const LinuxImageIO imageIO;
  for (const std::string extension : {"jpg", "png", "heic", "tiff", "gif", "bmp", "webp", "ico"}) {
    const FileURL url = folder / "shrinking";
    writeFile(url, readFile(sample("photo." + extension)));
    const auto source = imageIO.createSource(url);
    ASSERT_TRUE(source);
    std::filesystem::resize_file(url.path(), 700);
    EXPECT_FALSE(source->createImage(0)) << extension;
  }
}

TEST(LinuxImageIO, readsOnlyTheFirstPictureOfAFile) {
  const TemporaryFolder folder;
  const LinuxImageIO imageIO;
  const auto source = imageIO.createSource(sample("animated.gif"));
  ASSERT_TRUE(source);
  EXPECT_FALSE(source->createImage(1));
  ASSERT_TRUE(write(folder / "first.png", imageType::png, source->createImage(0)));
  const PixelBuffer first = decode(pngCodec, readFile(folder / "first.png"));
  EXPECT_EQ(first.row(20)[0], 255);  // red, the first of the three
  EXPECT_EQ(first.row(20)[1], 0);
}

TEST(LinuxImageIO, doesNotChangeTheSource) {
  const Bytes before = readFile(sample("telephone.jpg"));
  EXPECT_TRUE(open(sample("telephone.jpg")));
  EXPECT_EQ(readFile(sample("telephone.jpg")), before);
}

TEST(LinuxImageIO, dropsAProfileThatIsNotForThePixels) {
  const TemporaryFolder folder;
  PixelBuffer picture = makePicture(8, 8, rgb8);
  picture.iccProfile = makeCmykTestProfile();
  writeFile(folder / "odd.jpg", encode(jpegCodec, picture));
  ASSERT_FALSE(decode(jpegCodec, readFile(folder / "odd.jpg")).iccProfile.empty());
  ASSERT_TRUE(write(folder / "odd.png", imageType::png, open(folder / "odd.jpg")));
  EXPECT_TRUE(decode(pngCodec, readFile(folder / "odd.png")).iccProfile.empty());
}

TEST(LinuxImageIO, writesPicturesThatAreWhollyOpaqueWithoutAlpha) {
  const TemporaryFolder folder;
  const auto opaque = std::make_shared<LinuxImage>(
      converted(makePicture(9, 9, rgb8), {Channels::rgba, Depth::eight}));
  ASSERT_TRUE(write(folder / "opaque.png", imageType::png, opaque));
  EXPECT_EQ(decode(pngCodec, readFile(folder / "opaque.png")).layout(), rgb8);
}

TEST(LinuxImageIO, makesNoDestinationOfAnUnknownTypeOrForSeveralPictures) {
  const TemporaryFolder folder;
  const LinuxImageIO imageIO;
  EXPECT_FALSE(imageIO.createDestination(folder / "a.svg", "public.svg-image", 1));
  EXPECT_FALSE(imageIO.createDestination(folder / "a.png", imageType::png, 2));
  EXPECT_TRUE(folder.names().empty());
}

TEST(LinuxImageIO, doesNotWriteOverAFile) {
  const TemporaryFolder folder;
  writeFile(folder / "there.png", Bytes{1, 2, 3});
  EXPECT_FALSE(write(folder / "there.png", imageType::png, open(sample("photo.png"))));
  EXPECT_EQ(readFile(folder / "there.png"), (Bytes{1, 2, 3}));
}

TEST(LinuxImageIO, leavesNothingWhereItCouldNotWrite) {
  const TemporaryFolder folder;
  const auto photo = open(sample("photo.jpg"));
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit small{700, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  std::vector<std::string_view> written;
  for (const Codec& codec : codecs)
    if (codec.typeIdentifier != imageType::ico &&
        write(folder / "photo", codec.typeIdentifier, photo))
      written.push_back(codec.typeIdentifier);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  EXPECT_TRUE(written.empty()) << written.front();
  EXPECT_TRUE(folder.names().empty());
}

TEST(LinuxImageIO, leavesNothingWhereTheFormatCannotHoldThePicture) {
  const TemporaryFolder folder;
  EXPECT_FALSE(write(folder / "large.ico", imageType::ico, open(sample("photo.jpg"))));
  EXPECT_TRUE(folder.names().empty());
}

TEST(LinuxImageIO, worksOnSeveralThreadsAtOnce) {
  const TemporaryFolder folder;
  std::array<int, 4> written{};
  {
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < written.size(); ++i)
      threads.emplace_back([&folder, &written, i] {
        for (const Codec& codec : codecs) {
          const FileURL url = folder / (std::to_string(i) + std::string(codec.typeIdentifier));
          // Small enough for an icon, with transparency and a profile to convert from.
          PixelBuffer picture = makePicture(96, 64, {Channels::rgba, Depth::eight});
          picture.iccProfile = makeProfile(sRGBChromaticities, {1.8});
          if (write(url, codec.typeIdentifier, std::make_shared<LinuxImage>(std::move(picture))) &&
              open(url))
            ++written[i];
        }
      });
  }
  for (const int count : written)
    EXPECT_EQ(count, static_cast<int>(codecs.size()));
}

TEST(LinuxImage, growsACutToWholePixelsAndKeepsItInsideThePicture) {
  const auto image = std::make_shared<LinuxImage>(makePicture(11, 10, rgb8));
  const auto half = image->cropping({0.5, 0, 10, 10});
  EXPECT_EQ(half->width(), 11U);
  EXPECT_EQ(half->height(), 10U);
  const auto corner = image->cropping({8, -5, 100, 7});
  EXPECT_EQ(corner->width(), 3U);
  EXPECT_EQ(corner->height(), 2U);
  EXPECT_FALSE(image->cropping({11, 0, 5, 5}));
  EXPECT_FALSE(image->cropping({0, 0, 0, 5}));
  EXPECT_FALSE(image->cropping({0, 0, std::nan(""), 5}));
}

TEST(LinuxImage, cutsACutOutOfACut) {
  const TemporaryFolder folder;
  const PixelBuffer whole = makePicture(20, 20, rgb8);
  const auto image = std::make_shared<LinuxImage>(makePicture(20, 20, rgb8));
  const auto inner = image->cropping({5, 5, 10, 10})->cropping({2, 3, 4, 4});
  ASSERT_TRUE(write(folder / "inner.png", imageType::png, inner));
  const PixelBuffer read = decode(pngCodec, readFile(folder / "inner.png"));
  for (std::size_t y = 0; y < 4; ++y)
    EXPECT_TRUE(std::equal(read.row(y), read.row(y) + 12, whole.row(8 + y) + 7 * 3));
}

}  // namespace
}  // namespace kestrivane::imageTesting

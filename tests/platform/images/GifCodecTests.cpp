#include <set>

#include <gtest/gtest.h>

#include "platform/linux/images/GifCodec.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

/// `count` different colours, in rows of 16.
PixelBuffer colours(std::size_t count, PixelLayout layout) {
  PixelBuffer picture = PixelBuffer::create(16, (count + 15) / 16, layout);
  for (std::size_t i = 0; i < 16 * picture.height(); ++i) {
    const std::size_t number = std::min(i, count - 1);
    std::uint8_t* pixel = picture.row(0) + i * layout.channelCount();
    pixel[0] = static_cast<std::uint8_t>(number * 7);
    pixel[1] = static_cast<std::uint8_t>(number);
    pixel[2] = static_cast<std::uint8_t>(number / 256);
    if (layout.hasAlpha()) pixel[3] = 255;
  }
  return picture;
}

/// A file whose screen has 4 x 3 pixels and whose palette has two colours.
struct Gif {
  Bytes screen{4, 0, 3, 0, 0x80, 0, 0};
  Bytes palette{10, 20, 30, 200, 100, 50};
  Bytes control{};
  Bytes frame{0x2C, 0, 0, 0, 0, 2, 0, 1, 0, 0};
  Bytes localPalette{};
  // Codes of three bits: clear, number 1, number 0, end.
  Bytes codes{2, 2, 0x0C | 0x00, 0x0A, 0};

  Bytes file() const {
    Bytes bytes{'G', 'I', 'F', '8', '9', 'a'};
    for (const Bytes& part : {screen, palette, control, frame, localPalette, codes, Bytes{0x3B}})
      bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
  }
  PixelBuffer read() const { return decode(gifCodec, file()); }
};

TEST(GifCodec, keepsEveryColourOfAPictureThatHasFew) {
  for (const std::size_t count : {1U, 2U, 3U, 16U, 17U, 255U, 256U}) {
    const PixelBuffer picture = colours(count, rgb8);
    const PixelBuffer read = decode(gifCodec, encode(gifCodec, picture));
    EXPECT_EQ(pixelsOf(converted(read, rgb8)), pixelsOf(picture)) << count;
  }
}

TEST(GifCodec, keepsTwoHundredAndFiftyFiveColoursBesideTransparency) {
  PixelBuffer picture = colours(255, rgba8);
  std::fill_n(picture.row(15) + 15 * 4, 4, std::uint8_t{0});
  const PixelBuffer read = decode(gifCodec, encode(gifCodec, picture));
  ASSERT_EQ(read.layout(), rgba8);
  EXPECT_EQ(pixelsOf(read), pixelsOf(picture));
}

TEST(GifCodec, comesCloseToAPictureOfManyColours) {
  const PixelBuffer picture = makePicture(160, 120, rgb8);
  const PixelBuffer read = decode(gifCodec, encode(gifCodec, picture));
  ASSERT_EQ(read.layout(), rgb8);
  EXPECT_LT(meanDifference(picture, read), 5);
}

TEST(GifCodec, keepsTheMeanOfAPictureOfManyColours) {
  const PixelBuffer picture = makePicture(1200, 900, rgb8);  // large enough to be sampled
  const PixelBuffer read = decode(gifCodec, encode(gifCodec, picture));
  for (std::size_t channel = 0; channel < 3; ++channel) {
    double difference = 0;
    for (std::size_t i = channel; i < picture.byteCount(); i += 3)
      difference += picture.row(0)[i] - read.row(0)[i];
    EXPECT_LT(std::abs(difference / (1200 * 900)), 0.5) << channel;
  }
}

TEST(GifCodec, keepsGreyGrey) {
  const PixelBuffer picture = makePicture(50, 40, {Channels::grey, Depth::eight});
  const PixelBuffer read = decode(gifCodec, encode(gifCodec, picture));
  ASSERT_EQ(read.layout(), picture.layout());
  EXPECT_EQ(pixelsOf(read), pixelsOf(picture));
}

TEST(GifCodec, makesPixelsBelowHalfAlphaTransparentAndTheOthersOpaque) {
  const PixelBuffer picture = makePicture(90, 70, rgba8);
  const PixelBuffer read = decode(gifCodec, encode(gifCodec, picture));
  ASSERT_EQ(read.layout(), rgba8);
  std::set<int> seen;
  for (std::size_t i = 3; i < picture.byteCount(); i += 4) {
    ASSERT_EQ(read.row(0)[i], picture.row(0)[i] < 128 ? 0 : 255);
    seen.insert(read.row(0)[i]);
  }
  EXPECT_EQ(seen.size(), 2U);
}

TEST(GifCodec, writesWhatOtherProgramsRead) {
  const TemporaryFolder folder;
  const std::string file = (folder / "a.gif").path();
  const PixelBuffer picture = makePicture(160, 120, rgba8);
  writeFile(folder / "a.gif", encode(gifCodec, picture));
  const std::string read = outputOf("convert " + file + " -depth 8 rgba:-");
  const PixelBuffer ours = decode(gifCodec, readFile(folder / "a.gif"));
  ASSERT_EQ(read.size(), ours.byteCount());
  for (std::size_t i = 0; i < read.size(); i += 4) {
    const auto* theirs = reinterpret_cast<const std::uint8_t*>(read.data()) + i;
    ASSERT_EQ(theirs[3], ours.row(0)[i + 3]);
    ASSERT_TRUE(theirs[3] == 0 || std::equal(theirs, theirs + 3, ours.row(0) + i));
  }
}

TEST(GifCodec, readsInterlacedPictures) {
  const TemporaryFolder folder;
  const std::string file = (folder / "a.gif").path();
  for (const char* size : {"40x1", "31x2", "31x5", "31x23"}) {
    outputOf(std::string("convert -seed 1 -size ") + size +
             " plasma:red-blue -colors 100 -interlace GIF " + file);
    const Bytes bytes = readFile(folder / "a.gif");
    const PixelBuffer read = decode(gifCodec, bytes);
    const std::string other = outputOf("convert " + file + " -depth 8 rgb:-");
    EXPECT_EQ(pixelsOf(converted(read, rgb8)), Bytes(other.begin(), other.end())) << size;
  }
}

TEST(GifCodec, readsTheFirstPictureOfAnAnimation) {
  const TemporaryFolder folder;
  const std::string file = (folder / "a.gif").path();
  outputOf("convert -delay 10 -loop 0 -size 8x6 xc:red xc:lime xc:blue " + file);
  const PixelBuffer read = converted(decode(gifCodec, readFile(folder / "a.gif")), rgb8);
  EXPECT_EQ(read.width(), 8U);
  EXPECT_EQ(read.height(), 6U);
  EXPECT_EQ(Bytes(read.row(5), read.row(5) + 3), (Bytes{255, 0, 0}));
}

TEST(GifCodec, laysASmallerFrameOnATransparentScreen) {
  Gif gif;
  gif.frame[1] = 1;  // from the left
  gif.frame[3] = 2;  // from the top
  const PixelBuffer read = gif.read();
  ASSERT_EQ(read.layout(), rgba8);
  ASSERT_EQ(read.width(), 4U);
  ASSERT_EQ(read.height(), 3U);
  Bytes wanted(4 * 3 * 4);
  std::ranges::copy(Bytes{200, 100, 50, 255, 10, 20, 30, 255}, wanted.begin() + (2 * 4 + 1) * 4);
  EXPECT_EQ(pixelsOf(read), wanted);
}

TEST(GifCodec, growsAScreenThatIsTooSmallForTheFrame) {
  Gif gif;
  gif.screen[0] = 0;
  gif.screen[2] = 0;
  const PixelBuffer read = gif.read();
  EXPECT_EQ(read.layout(), rgb8);
  EXPECT_EQ(pixelsOf(read), (Bytes{200, 100, 50, 10, 20, 30}));
}

TEST(GifCodec, prefersThePaletteOfTheFrame) {
  Gif gif;
  gif.screen = {2, 0, 1, 0, 0x80, 0, 0};
  gif.frame.back() = 0x80;
  gif.localPalette = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(pixelsOf(gif.read()), (Bytes{4, 5, 6, 1, 2, 3}));
  gif.screen[4] = 0;
  gif.palette.clear();
  EXPECT_EQ(pixelsOf(gif.read()), (Bytes{4, 5, 6, 1, 2, 3}));
}

TEST(GifCodec, readsTheTransparentColour) {
  Gif gif;
  gif.screen = {2, 0, 1, 0, 0x80, 0, 0};
  gif.control = {0x21, 0xF9, 4, 1, 0, 0, 0, 0};
  EXPECT_EQ(pixelsOf(gif.read()), (Bytes{200, 100, 50, 255, 0, 0, 0, 0}));
  gif.control[6] = 77;  // a number that no pixel has
  EXPECT_EQ(pixelsOf(gif.read()), (Bytes{200, 100, 50, 255, 10, 20, 30, 255}));
}

TEST(GifCodec, failsOrIsCompleteWhereverTheFileEnds) {
  for (const PixelLayout layout : {rgb8, rgba8}) {
    const Bytes bytes = encode(gifCodec, makePicture(20, 15, layout));
    const Bytes wanted = pixelsOf(decode(gifCodec, bytes));
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      const Bytes part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
      if (size < bytes.size() - 1)
        EXPECT_THROW(decode(gifCodec, part), ImageError) << size;
      else
        EXPECT_EQ(pixelsOf(decode(gifCodec, part)), wanted) << "all but the closing byte";
    }
  }
}

TEST(GifCodec, refusesWhatCannotBe) {
  ASSERT_NO_THROW(Gif().read()) << "what the others are changed from";
  Gif gif;
  gif.screen = {0x60, 0xEA, 0x60, 0xEA, 0x80, 0, 0};
  EXPECT_THROW(gif.read(), ImageError) << "a screen of 60,000 x 60,000";
  gif = {};
  gif.frame[6] = gif.frame[8] = 0xEA;
  EXPECT_THROW(gif.read(), ImageError) << "a frame of 59,906 x 59,905";
  gif = {};
  gif.frame[5] = 0;
  EXPECT_THROW(gif.read(), ImageError) << "an empty frame";
  gif = {};
  gif.frame[7] = 2;
  EXPECT_THROW(gif.read(), ImageError) << "too few pixels";
  gif = {};
  gif.screen[4] = 0;
  gif.palette.clear();
  EXPECT_THROW(gif.read(), ImageError) << "no palette";
  gif = {};
  gif.codes = {2, 2, 0x14, 0x0A, 0};  // number 2 first
  EXPECT_THROW(gif.read(), ImageError) << "a colour that is not in the palette";
  gif = {};
  gif.codes = {2, 2, 0x3C, 0x0A, 0};  // a code that nothing has defined yet
  EXPECT_THROW(gif.read(), ImageError) << "damaged codes";
  gif = {};
  gif.codes[0] = 12;
  EXPECT_THROW(gif.read(), ImageError) << "codes too long";
  gif = {};
  gif.frame[0] = 0x3B;
  EXPECT_THROW(gif.read(), ImageError) << "no picture";
  gif.frame[0] = 0x55;
  EXPECT_THROW(gif.read(), ImageError) << "an unknown block";
}

TEST(GifCodec, refusesASideThatTheFormatCannotHold) {
  EXPECT_NO_THROW(encode(gifCodec, makePicture(65'535, 1, rgb8)));
  EXPECT_THROW(makePicture(65'536, 1, rgb8), ImageError);
}

}  // namespace
}  // namespace kestrivane::imageTesting

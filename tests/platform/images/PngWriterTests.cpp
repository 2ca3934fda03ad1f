#include <utility>

#include <gtest/gtest.h>

#include "platform/linux/images/PngCodec.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

void expectExact(const PixelBuffer& picture) {
  EXPECT_EQ(maximumDifference(picture, decode(pngCodec, encode(pngCodec, picture))), 0)
      << picture.width() << " x " << picture.height();
}

TEST(PngWriter, bringsBackManyStripsOfEveryLayout) {
  for (const Depth depth : {Depth::eight, Depth::sixteen})
    for (const Channels channels :
         {Channels::grey, Channels::greyAlpha, Channels::rgb, Channels::rgba})
      expectExact(makePicture(1021, 1500, {channels, depth}));
}

TEST(PngWriter, bringsBackNoiseWhichCannotBeCompressed) {
  expectExact(makeNoise(1021, 900, rgb8));
}

TEST(PngWriter, bringsBackTheSmallestAndTheLongestPictures) {
  for (const auto& [width, height] : {std::pair<std::size_t, std::size_t>{1, 1},
                                      {1, 2},
                                      {2, 1},
                                      {maximumSide, 1},
                                      {1, maximumSide}}) {
    expectExact(makePicture(width, height, rgb8));
    expectExact(makeNoise(width, height, {Channels::rgba, Depth::sixteen}));
  }
}

TEST(PngWriter, bringsBackRowsLongerThanAStrip) {
  expectExact(makeNoise(maximumSide, 3, {Channels::rgba, Depth::sixteen}));
}

TEST(PngWriter, bringsBackHeightsAroundWholeStrips) {
  // 1023 bytes and the filter's one: 512 rows are a strip.
  for (const std::size_t height : {511U, 512U, 513U, 1024U, 1025U})
    expectExact(makePicture(341, height, rgb8));
}

TEST(PngWriter, isReadBackTheSameByAnIndependentProgram) {
  const TemporaryFolder folder;
  const FileURL png = folder / "picture.png";
  const FileURL raw = folder / "picture.rgb";
  const PixelBuffer picture = makePicture(1021, 1500, rgb8);
  writeFile(png, encode(pngCodec, picture));
  outputOf("convert " + png.path() + " -depth 8 rgb:" + raw.path());
  EXPECT_TRUE(readFile(raw) == Bytes(picture.row(0), picture.row(0) + picture.byteCount()));
}

TEST(PngWriter, convertsRowsOnSeveralThreadsAtOnce) {
  const PixelBuffer deep = makePicture(1021, 1500, {Channels::rgba, Depth::sixteen});
  const PixelBuffer shallow = converted(deep, rgb8);
  const TemporaryFolder folder;
  auto output = ImageOutput::create(folder / "picture.png");
  ASSERT_TRUE(output);
  PixelRows rows(deep, {0, 0, deep.width(), deep.height()}, rgb8, ProfileSupport::embedded);
  png::encode(rows, *output);
  ASSERT_TRUE(output->finish());
  EXPECT_EQ(maximumDifference(shallow, decode(pngCodec, readFile(folder / "picture.png"))), 0);
}

TEST(PngWriter, writesDrawingsUnfilteredAndGradientsFiltered) {
  // Pixels of which one row repeats another, but neighbours are unlike each other.
  PixelBuffer drawing = makeNoise(500, 400, rgb8);
  for (std::size_t y = 1; y < drawing.height(); ++y)
    for (std::size_t i = 0; i < drawing.rowBytes(); ++i)
      drawing.row(y)[i] = drawing.row(0)[(i + y * 30) % drawing.rowBytes()];
  EXPECT_LT(encode(pngCodec, drawing).size(), drawing.byteCount() / 50);

  const PixelBuffer gradient = makePicture(500, 400, rgb8);
  EXPECT_LT(encode(pngCodec, gradient).size(), gradient.byteCount() / 20);
}

TEST(PngWriter, givesTheSameFileEveryTime) {
  const PixelBuffer picture = makeNoise(700, 2000, rgb8);
  const Bytes first = encode(pngCodec, picture);
  for (int round = 0; round < 3; ++round)
    EXPECT_TRUE(encode(pngCodec, picture) == first);
}

}  // namespace
}  // namespace kestrivane::imageTesting

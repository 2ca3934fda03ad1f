#include <algorithm>

#include <gtest/gtest.h>

#include "platform/linux/images/ExifOrientation.hpp"
#include "platform/linux/images/HeicCodec.hpp"
#include "platform/linux/images/HeifFile.hpp"
#include "platform/linux/images/HeifHandles.hpp"
#include "platform/linux/images/JpegCodec.hpp"
#include "platform/linux/images/MadeProfile.hpp"
#include "platform/linux/images/PngCodec.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

/// What libheif's own program makes of a HEIC.
PixelBuffer shownByHeifConvert(const FileURL& url) {
  const TemporaryFolder folder;
  const FileURL shown = folder / "shown.png";
  outputOf("heif-convert " + url.path() + " " + shown.path() + " > /dev/null 2>&1");
  return decode(pngCodec, readFile(shown));
}

/// A HEIC whose container says how its pixels are to be turned.
Bytes encodeTurned(const PixelBuffer& picture, heif_orientation orientation) {
  const heic::Context context(heif_context_alloc());
  heif_image* made = nullptr;
  heic::check(heif_image_create(static_cast<int>(picture.width()),
                                static_cast<int>(picture.height()), heif_colorspace_RGB,
                                heif_chroma_interleaved_RGB, &made));
  const heic::HeifImage image(made);
  heic::check(heif_image_add_plane(made, heif_channel_interleaved,
                                   static_cast<int>(picture.width()),
                                   static_cast<int>(picture.height()), 8));
  int stride = 0;
  std::uint8_t* const plane = heif_image_get_plane(made, heif_channel_interleaved, &stride);
  for (std::size_t y = 0; y < picture.height(); ++y)
    std::copy_n(picture.row(y), picture.rowBytes(), plane + y * static_cast<std::size_t>(stride));
  heif_encoder* encoder = nullptr;
  heic::check(heif_context_get_encoder_for_format(context.get(), heif_compression_HEVC, &encoder));
  const heic::Encoder encoderOwner(encoder);
  const LibraryHandle<heif_encoding_options, heif_encoding_options_free> options(
      heif_encoding_options_alloc());
  options->image_orientation = orientation;
  heic::check(heif_context_encode_image(context.get(), made, encoder, options.get(), nullptr));
  heif_writer writer{};
  writer.writer_api_version = 1;
  writer.write = [](heif_context*, const void* bytes, std::size_t size, void* user) {
    const auto* const start = static_cast<const std::uint8_t*>(bytes);
    static_cast<Bytes*>(user)->assign(start, start + size);
    return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
  };
  Bytes file;
  heic::check(heif_context_write(context.get(), &writer, &file));
  return file;
}

TEST(HeicCodec, bringsBackNearlyTheSamePicture) {
  for (const Channels channels :
       {Channels::grey, Channels::greyAlpha, Channels::rgb, Channels::rgba}) {
    const PixelBuffer picture = makePicture(96, 64, {channels, Depth::eight});
    const PixelBuffer read = decode(heicCodec, encode(heicCodec, picture));
    EXPECT_LT(meanDifference(picture, read), 3) << static_cast<int>(channels);
  }
}

TEST(HeicCodec, keepsTenOfSixteenBits) {
  for (const Channels channels :
       {Channels::grey, Channels::greyAlpha, Channels::rgb, Channels::rgba}) {
    const PixelBuffer picture = makePicture(96, 64, {channels, Depth::sixteen});
    const PixelBuffer read = decode(heicCodec, encode(heicCodec, picture));
    EXPECT_LT(meanDifference(picture, read), 3 * 257) << static_cast<int>(channels);
  }
}

TEST(HeicCodec, holdsOddAndTinySizes) {
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 9}, {17, 13}, {64, 65}, {65, 64}}) {
    const PixelBuffer picture =
        makePicture(static_cast<std::size_t>(width), static_cast<std::size_t>(height), rgb8);
    const PixelBuffer read = decode(heicCodec, encode(heicCodec, picture));
    EXPECT_LT(meanDifference(picture, read), 8) << width << "x" << height;
  }
}

TEST(HeicCodec, keepsTheProfile) {
  PixelBuffer picture = makePicture(64, 64, rgb8);
  picture.iccProfile = makeProfile(sRGBChromaticities, {1.8});
  const PixelBuffer read = decode(heicCodec, encode(heicCodec, picture));
  EXPECT_EQ(read.iccProfile, picture.iccProfile);
  EXPECT_LT(meanDifference(picture, read), 3);
}

TEST(HeicCodec, readsPhotosAsOtherProgramsDo) {
  const PixelBuffer photo = decode(heicCodec, readFile(sample("photo.heic")));
  EXPECT_TRUE(photo.iccProfile.empty());
  EXPECT_LT(meanDifference(photo, shownByHeifConvert(sample("photo.heic"))), 1);
}

TEST(HeicCodec, writesPhotosAsOtherProgramsReadThem) {
  const TemporaryFolder folder;
  const PixelBuffer picture = decode(pngCodec, readFile(sample("photo.png")));
  writeFile(folder / "photo.heic", encode(heicCodec, picture));
  EXPECT_LT(meanDifference(picture, shownByHeifConvert(folder / "photo.heic")), 4);
}

// Pictures of more than a tile, of which the last ones stand out at the right and at the bottom.
TEST(HeicCodec, writesLargePicturesInTiles) {
  for (const Channels channels :
       {Channels::grey, Channels::greyAlpha, Channels::rgb, Channels::rgba}) {
    for (const Depth depth : {Depth::eight, Depth::sixteen}) {
      const PixelBuffer picture = makePicture(1101, 37, {channels, depth});
      const Bytes encoded = encode(heicCodec, picture);
      const heic::HeifFile file(encoded);
      EXPECT_EQ(file.targetsOf(file.primary(), heic::fourCC("dimg")).size(), 2);
      const PixelBuffer read = decode(heicCodec, encoded);
      EXPECT_EQ(read.layout(), picture.layout());
      EXPECT_LT(meanDifference(picture, read), depth == Depth::eight ? 3 : 3 * 257);
    }
  }
}

TEST(HeicCodec, writesTilesInBothDirections) {
  PixelBuffer picture = makePicture(1031, 1200, rgb8);
  picture.iccProfile = makeProfile(sRGBChromaticities, {1.8});
  const Bytes encoded = encode(heicCodec, picture);
  const heic::HeifFile file(encoded);
  const auto tiles = file.targetsOf(file.primary(), heic::fourCC("dimg"));
  ASSERT_EQ(tiles.size(), 4);
  // Some readers take only tiles of one size that are coded alike.
  for (const std::uint32_t property : {heic::fourCC("ispe"), heic::fourCC("hvcC")})
    for (const heic::ItemID tile : tiles)
      EXPECT_TRUE(std::ranges::equal(file.findProperty(tile, property)->body,
                                     file.findProperty(tiles[0], property)->body));
  const PixelBuffer read = decode(heicCodec, encoded);
  EXPECT_EQ(read.iccProfile, picture.iccProfile);
  EXPECT_LT(meanDifference(picture, read), 3);
}

TEST(HeicCodec, writesTilesAsOtherProgramsReadThem) {
  const TemporaryFolder folder;
  for (const Channels channels : {Channels::grey, Channels::rgb, Channels::rgba}) {
    const PixelBuffer picture = makePicture(1101, 1037, {channels, Depth::eight});
    const FileURL url = folder / (std::to_string(static_cast<int>(channels)) + ".heic");
    writeFile(url, encode(heicCodec, picture));
    const PixelBuffer shown = shownByHeifConvert(url);
    EXPECT_LT(meanDifference(converted(picture, shown.layout()), shown), 4);
  }
}

TEST(HeicCodec, readsAlpha) {
  const PixelBuffer picture = decode(heicCodec, readFile(sample("transparent.heic")));
  const PixelBuffer source = decode(pngCodec, readFile(sample("transparent.png")));
  ASSERT_EQ(picture.layout(), source.layout());
  EXPECT_LT(meanDifference(converted(picture, rgb8), converted(source, rgb8)), 6);
}

TEST(HeicCodec, readsTenBitsAsSixteen) {
  const PixelBuffer picture = decode(heicCodec, readFile(sample("deep.heic")));
  const PixelBuffer source = decode(pngCodec, readFile(sample("deep.png")));
  ASSERT_EQ(picture.layout(), (PixelLayout{Channels::rgb, Depth::sixteen}));
  // Less than a step of eight bits: their lower bits mean something.
  EXPECT_LT(meanDifference(picture, source), 200);
  const PixelBuffer shown = shownByHeifConvert(sample("deep.heic"));
  ASSERT_EQ(shown.layout(), picture.layout());
  EXPECT_LT(maximumDifference(picture, shown), 2 * 65'535 / 1023);
}

TEST(HeicCodec, keepsAGreyPictureGrey) {
  const PixelBuffer picture = makePicture(96, 64, {Channels::grey, Depth::eight});
  EXPECT_EQ(decode(heicCodec, encode(heicCodec, picture)).layout(), picture.layout());
}

TEST(HeicCodec, turnsThePictureUprightForAllEightOrientations) {
  const PixelBuffer stored = makePicture(96, 64, rgb8);
  for (int value = 1; value <= 8; ++value) {
    const PixelBuffer shown =
        decode(heicCodec, encodeTurned(stored, static_cast<heif_orientation>(value)));
    const PixelBuffer expected = upright(converted(stored, rgb8), static_cast<Orientation>(value));
    EXPECT_LT(meanDifference(shown, expected), 3) << value;
  }
}

TEST(HeicCodec, readsAGridOfTiles) {
  const PixelBuffer source = decode(pngCodec, readFile(sample("photo.png")));
  const PixelBuffer picture = decode(heicCodec, readFile(sample("grid.heic")));
  EXPECT_LT(meanDifference(picture, source), 4);
  EXPECT_LT(meanDifference(picture, shownByHeifConvert(sample("grid.heic"))), 1);
}

TEST(HeicCodec, readsATurnedGridWithItsProfile) {
  const PixelBuffer source = decode(pngCodec, readFile(sample("photo.png")));
  const PixelBuffer picture = decode(heicCodec, readFile(sample("telephone.heic")));
  EXPECT_LT(meanDifference(picture, source), 4);
  EXPECT_EQ(picture.iccProfile, decode(jpegCodec, readFile(sample("display-p3.jpg"))).iccProfile);
}

/// `bytes` with the first place where `from` stands changed to `to`, of the same length.
Bytes replaced(Bytes bytes, const Bytes& from, const Bytes& to) {
  const auto found = std::ranges::search(bytes, from);
  EXPECT_FALSE(found.empty());
  std::ranges::copy(to, found.begin());
  return bytes;
}

TEST(HeicCodec, refusesAGridThatDoesNotFit) {
  const Bytes bytes = readFile(sample("grid.heic"));
  // Rows and columns less one, width and height.
  const Bytes grid = {0, 0, 1, 2, 0, 240, 0, 160};
  const auto read = [&](const Bytes& changed) {
    decode(heicCodec, replaced(bytes, grid, changed));
  };
  EXPECT_NO_THROW(read(grid));
  EXPECT_THROW(read({0, 0, 2, 2, 0, 240, 0, 160}), ImageError) << "three tiles are missing";
  EXPECT_THROW(read({0, 0, 0, 2, 0, 240, 0, 96}), ImageError) << "three tiles are left over";
  EXPECT_THROW(read({0, 0, 1, 2, 1, 33, 0, 160}), ImageError) << "wider than the tiles";
  EXPECT_THROW(read({0, 0, 1, 2, 0, 192, 0, 160}), ImageError) << "a column shows nothing";
  EXPECT_THROW(read({0, 0, 1, 2, 0, 240, 0, 193}), ImageError) << "higher than the tiles";
  EXPECT_THROW(read({0, 0, 1, 2, 0, 0, 0, 160}), ImageError) << "empty";
  EXPECT_THROW(read({1, 0, 1, 2, 0, 240, 0, 160}), ImageError) << "of another version";
}

TEST(HeicCodec, refusesAPictureOfAnotherSizeThanItSays) {
  const Bytes bytes = readFile(sample("grid.heic"));
  const Bytes tile = {0, 0, 0, 96, 0, 0, 0, 96};
  EXPECT_THROW(decode(heicCodec, replaced(bytes, tile, {0, 0, 0, 100, 0, 0, 0, 96})), ImageError);
  EXPECT_THROW(decode(heicCodec, replaced(bytes, tile, {0, 0, 0, 95, 0, 0, 0, 96})), ImageError);
}

TEST(HeicCodec, refusesAPictureWhoseDataEndsTooEarly) {
  // The decoder gives such pictures out as if nothing were missing.
  for (const char* name : {"slice-ends-early", "slice-ends-early-before-sao"}) {
    const FileURL url = sample("../../fuzz/corpus/heic/" + std::string(name) + ".heic");
    EXPECT_THROW(decode(heicCodec, readFile(url)), ImageError) << name;
  }
}

TEST(HeicCodec, refusesATruncatedFile) {
  const Bytes bytes = readFile(sample("photo.heic"));
  for (std::size_t size = 0; size < bytes.size(); size += size < 600 ? 1 : 97)
    EXPECT_THROW(decode(heicCodec, std::span(bytes).first(size)), ImageError) << size;
  EXPECT_THROW(decode(heicCodec, std::span(bytes).first(bytes.size() - 1)), ImageError);
}

}  // namespace
}  // namespace kestrivane::imageTesting

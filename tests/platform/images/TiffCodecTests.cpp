#include <array>
#include <utility>

#include <gtest/gtest.h>
#include <tiffio.h>

#include "platform/linux/images/MadeProfile.hpp"
#include "platform/linux/images/PngCodec.hpp"
#include "platform/linux/images/TiffCodec.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

PixelBuffer decodeFile(const FileURL& url) {
  return decode(tiffCodec, readFile(url));
}

/// What ImageMagick makes of the sample with `options`, as a TIFF.
PixelBuffer decodeMade(const std::string& options, const std::string& source = "photo.png") {
  const TemporaryFolder folder;
  const FileURL made = folder / "made.tiff";
  outputOf("convert " + sample(source).path() + " " + options + " TIFF:" + made.path());
  return decodeFile(made);
}

PixelBuffer photo() {
  return decode(pngCodec, readFile(sample("photo.png")));
}

TEST(TiffCodec, bringsBackEveryLayoutExactly) {
  for (const Depth depth : {Depth::eight, Depth::sixteen})
    for (const Channels channels :
         {Channels::grey, Channels::greyAlpha, Channels::rgb, Channels::rgba}) {
      const PixelBuffer picture = makePicture(61, 43, {channels, depth});
      EXPECT_EQ(maximumDifference(picture, decode(tiffCodec, encode(tiffCodec, picture))), 0);
    }
}

TEST(TiffCodec, bringsBackAPictureOfManyStrips) {
  const PixelBuffer picture = makePicture(700, 600, rgb8);
  EXPECT_EQ(maximumDifference(picture, decode(tiffCodec, encode(tiffCodec, picture))), 0);
}

TEST(TiffCodec, bringsBackNoiseWhichCannotBeCompressed) {
  const PixelBuffer picture = makeNoise(700, 600, {Channels::rgba, Depth::sixteen});
  EXPECT_EQ(maximumDifference(picture, decode(tiffCodec, encode(tiffCodec, picture))), 0);
}

TEST(TiffCodec, bringsBackTheSmallestAndTheLongestPictures) {
  for (const auto& [width, height] : {std::pair<std::size_t, std::size_t>{1, 1},
                                      {1, 2},
                                      {2, 1},
                                      {maximumSide, 2},
                                      {2, maximumSide}}) {
    const PixelBuffer picture = makeNoise(width, height, rgb8);
    EXPECT_EQ(maximumDifference(picture, decode(tiffCodec, encode(tiffCodec, picture))), 0);
  }
}

TEST(TiffCodec, writesTheSameBytesOnOneThreadAndOnMany) {
  const PixelBuffer picture = makeNoise(700, 900, rgb8);
  const auto bytesOf = [&](std::size_t threads) {
    const TemporaryFolder folder;
    auto output = ImageOutput::create(folder / "picture.tiff");
    tiff::encodeOn(threads, PixelRows(picture), *output);
    EXPECT_TRUE(output->finish());
    return readFile(folder / "picture.tiff");
  };
  const Bytes alone = bytesOf(1);
  EXPECT_EQ(maximumDifference(picture, decode(tiffCodec, alone)), 0);
  EXPECT_TRUE(alone == bytesOf(2));
  EXPECT_TRUE(alone == bytesOf(8));
}

TEST(TiffCodec, isReadBackTheSameByIndependentPrograms) {
  const TemporaryFolder folder;
  const FileURL written = folder / "picture.tiff";
  const FileURL stored = folder / "stored.tiff";
  const FileURL raw = folder / "picture.rgb";
  for (const bool smooth : {true, false}) {
    const PixelBuffer picture = smooth ? makePicture(1021, 1500, rgb8) : makeNoise(511, 700, rgb8);
    const Bytes pixels(picture.row(0), picture.row(0) + picture.byteCount());
    writeFile(written, encode(tiffCodec, picture));
    EXPECT_EQ(outputOf("convert " + written.path() + " -depth 8 rgb:" + raw.path() + " 2>&1"), "");
    EXPECT_TRUE(readFile(raw) == pixels);
    EXPECT_EQ(outputOf("tiffcp -c none " + written.path() + " " + stored.path() + " 2>&1"), "");
    EXPECT_EQ(maximumDifference(picture, decodeFile(stored)), 0);
  }
}

TEST(TiffCodec, keepsTheProfile) {
  PixelBuffer picture = makePicture(8, 8, rgb8);
  picture.iccProfile = makeProfile(sRGBChromaticities, {1.8});
  EXPECT_EQ(decode(tiffCodec, encode(tiffCodec, picture)).iccProfile, picture.iccProfile);
}

TEST(TiffCodec, readsTiles) {
  EXPECT_EQ(maximumDifference(decodeFile(sample("tiled.tiff")), shownByImageMagick("tiled.tiff")),
            0);
}

TEST(TiffCodec, readsAPlaneForEachChannel) {
  EXPECT_EQ(maximumDifference(decodeFile(sample("planar.tiff")), shownByImageMagick("planar.tiff")),
            0);
}

TEST(TiffCodec, readsTilesOfPlanes) {
  const TemporaryFolder folder;
  const FileURL made = folder / "made.tiff";
  outputOf("tiffcp -t -w 48 -l 32 -p separate -c zip " + sample("tiled.tiff").path() + " " +
           made.path());
  EXPECT_EQ(maximumDifference(decodeFile(made), decodeFile(sample("tiled.tiff"))), 0);
}

TEST(TiffCodec, readsSixteenBits) {
  const PixelBuffer picture = decodeFile(sample("deep.tiff"));
  ASSERT_EQ(picture.layout(), rgb16);
  EXPECT_LE(maximumDifference(converted(picture, rgb8), shownByImageMagick("deep.tiff")), 1);
}

TEST(TiffCodec, readsSixteenBitsOfTheOtherByteOrder) {
  const PixelBuffer swapped = decodeMade("-depth 16 -endian MSB -compress zip", "deep.tiff");
  EXPECT_EQ(maximumDifference(swapped, decodeFile(sample("deep.tiff"))), 0);
}

TEST(TiffCodec, readsFloatingPointAsSixteenBits) {
  const PixelBuffer picture = decodeFile(sample("float.tiff"));
  ASSERT_EQ(picture.layout(), rgb16);
  EXPECT_LE(maximumDifference(converted(picture, rgb8), shownByImageMagick("float.tiff")), 1);
}

TEST(TiffCodec, readsOneBitWhoseZeroIsWhite) {
  const PixelBuffer picture = decodeFile(sample("fax.tiff"));
  ASSERT_EQ(picture.layout(), grey8);
  EXPECT_EQ(maximumDifference(converted(picture, rgb8), shownByImageMagick("fax.tiff")), 0);
}

TEST(TiffCodec, readsCmykAsRGB) {
  const PixelBuffer picture = decodeFile(sample("cmyk.tiff"));
  ASSERT_EQ(picture.layout(), rgb8);
  EXPECT_LE(maximumDifference(picture, shownByImageMagick("cmyk.tiff")), 2);
}

TEST(TiffCodec, readsJpegInside) {
  const PixelBuffer picture = decodeFile(sample("jpeg-inside.tiff"));
  ASSERT_EQ(picture.layout(), rgb8);
  EXPECT_LT(meanDifference(picture, shownByImageMagick("jpeg-inside.tiff")), 2);
}

TEST(TiffCodec, readsAPalette) {
  const PixelBuffer picture = decodeMade("-type Palette -colors 200 -compress lzw");
  ASSERT_EQ(picture.layout(), rgb8);
  EXPECT_LT(meanDifference(picture, photo()), 6);
}

TEST(TiffCodec, readsFourBitsOfGrey) {
  const PixelBuffer picture = decodeMade("-colorspace Gray -depth 4 -compress none");
  ASSERT_EQ(picture.layout(), grey8);
  for (std::size_t x = 0; x < picture.width(); ++x)
    ASSERT_EQ(picture.row(10)[x] % 17, 0);
}

TEST(TiffCodec, takesTheColoursOfAssociatedAlphaApart) {
  const TemporaryFolder folder;
  // Orange, three quarters opaque: the library's own writer, as not all programs get this right.
  Bytes pixel = {0xD0 * 0xC0 / 255, 0x40 * 0xC0 / 255, 0, 0xC0};
  TIFF* const file = TIFFOpen((folder / "made.tiff").path().c_str(), "w");
  ASSERT_TRUE(file);
  constexpr std::array<std::uint32_t, 3> ofOne = {TIFFTAG_IMAGEWIDTH, TIFFTAG_IMAGELENGTH,
                                                  TIFFTAG_ROWSPERSTRIP};
  for (const std::uint32_t tag : ofOne)
    TIFFSetField(file, tag, 1);
  TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, 4);
  TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  TIFFSetField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  const std::uint16_t associated = EXTRASAMPLE_ASSOCALPHA;
  TIFFSetField(file, TIFFTAG_EXTRASAMPLES, 1, &associated);
  EXPECT_EQ(TIFFWriteScanline(file, pixel.data(), 0), 1);
  TIFFClose(file);

  const PixelBuffer picture = decodeFile(folder / "made.tiff");
  ASSERT_EQ(picture.layout(), (PixelLayout{Channels::rgba, Depth::eight}));
  EXPECT_NEAR(picture.row(0)[0], 0xD0, 2);
  EXPECT_NEAR(picture.row(0)[1], 0x40, 2);
  EXPECT_EQ(picture.row(0)[3], 0xC0);
}

TEST(TiffCodec, readsWhatTheLibraryMustTranslate) {
  const PixelBuffer picture = decodeMade("-colorspace Lab -compress none");
  // The library's own idea of the white point shifts the colours a little.
  EXPECT_LT(meanDifference(converted(picture, rgb8), photo()), 8);
}

TEST(TiffCodec, turnsThePictureUpright) {
  const PixelBuffer picture = decodeMade("-rotate -90 -orient RightTop");
  EXPECT_EQ(maximumDifference(picture, photo()), 0);
}

TEST(TiffCodec, turnsTilesAndPlanesUpright) {
  const TemporaryFolder folder;
  const FileURL turned = folder / "turned.tiff";
  const FileURL made = folder / "made.tiff";
  outputOf("convert " + sample("photo.png").path() +
           " -rotate -90 -orient RightTop TIFF:" + turned.path());
  for (const std::string shape : {"-t -w 48 -l 32", "-s -r 7 -p separate"}) {
    outputOf("tiffcp -c none " + shape + " " + turned.path() + " " + made.path());
    EXPECT_EQ(maximumDifference(decodeFile(made), photo()), 0) << shape;
  }
}

TEST(TiffCodec, refusesATruncatedFileWhereverItEnds) {
  const Bytes bytes = encode(tiffCodec, makePicture(40, 30, rgb8));
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_THROW(decode(tiffCodec, std::span(bytes).first(size)), ImageError) << size;
}

TEST(TiffCodec, refusesDeflatedSamplesWithAnotherChecksum) {
  const TemporaryFolder folder;
  const FileURL made = folder / "made.tiff";
  for (const std::string shape : {"-s -r 20", "-s -r 1000", "-t -w 32 -l 16"}) {
    outputOf("tiffcp -c zip:p1 " + shape + " " + sample("photo.tiff").path() + " " + made.path());
    const Bytes whole = readFile(made);
    EXPECT_EQ(maximumDifference(decode(tiffCodec, whole), decodeFile(sample("photo.tiff"))), 0);
    // The first block begins behind the header and ends where its byte count says.
    const std::size_t end =
        std::stoul(outputOf("tiffinfo -s " + made.path() +
                            " | sed -n 's/.*0: \\[ *8, *\\([0-9]*\\)\\]/\\1/p'")) +
        8;
    Bytes damaged = whole;
    damaged[end - 1] ^= 1;
    EXPECT_THROW(decode(tiffCodec, damaged), ImageError) << shape;
  }
}

TEST(TiffCodec, refusesSamplesThatAreCutShort) {
  for (const std::string name : {"tiled.tiff", "planar.tiff", "fax.tiff", "jpeg-inside.tiff"}) {
    Bytes bytes = readFile(sample(name));
    // The directory may lie at either end; what is missing is zero, so the file keeps its length.
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 4),
              bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() * 3 / 4), std::uint8_t{0});
    EXPECT_THROW(decode(tiffCodec, bytes), ImageError) << name;
  }
}

}  // namespace
}  // namespace kestrivane::imageTesting

#include <gtest/gtest.h>

#include "platform/linux/images/Cmyk.hpp"
#include "platform/linux/images/ColorTransform.hpp"
#include "platform/linux/images/MadeProfile.hpp"
#include "platform/linux/images/PixelRows.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::imageTesting {
namespace {

// The primaries of SMPTE EG 432-1 with the white of daylight: those of "Display P3".
constexpr Chromaticities displayP3{
    {0.3127, 0.3290}, {0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}};

const Bytes& p3Profile() {
  static const Bytes profile = makeProfile(displayP3, {});
  return profile;
}

TEST(ColorTransform, knowsWhatAProfileIsFor) {
  EXPECT_EQ(kindOfProfile(p3Profile()), ProfileKind::rgb);
  EXPECT_EQ(kindOfProfile(makeGreyProfile({})), ProfileKind::grey);
  EXPECT_EQ(kindOfProfile({}), ProfileKind::unusable);
  EXPECT_EQ(kindOfProfile(Bytes(200, 3)), ProfileKind::unusable);
  EXPECT_EQ(kindOfProfile(std::span(p3Profile()).first(100)), ProfileKind::unusable);
}

TEST(ColorTransform, turnsDisplayP3IntoSRGB) {
  const auto transform = ColorTransform::toSRGB(p3Profile(), rgb8);
  ASSERT_TRUE(transform);
  // Computed by hand from the primaries: linear P3 to XYZ to linear sRGB, then the curve.
  const Bytes source = {128, 128, 128, 200, 100, 50};
  Bytes target(6);
  transform->convert(source.data(), target.data(), 2);
  const std::vector<int> expected = {128, 128, 128, 215, 93, 31};
  for (std::size_t i = 0; i < 6; ++i)
    EXPECT_NEAR(target[i], expected[i], 2) << i;
}

TEST(ColorTransform, leavesAlphaAsItIs) {
  const auto transform = ColorTransform::toSRGB(p3Profile(), rgba16);
  ASSERT_TRUE(transform);
  std::array<std::uint16_t, 4> pixel = {51'400, 25'700, 12'850, 4'321};
  transform->convert(reinterpret_cast<std::uint8_t*>(pixel.data()),
                     reinterpret_cast<std::uint8_t*>(pixel.data()), 1);
  EXPECT_EQ(pixel[3], 4'321);
  EXPECT_NEAR(pixel[0] / 257, 215, 2);
}

TEST(ColorTransform, isNotNeededWhenTheColoursAreSRGBAlready) {
  EXPECT_FALSE(ColorTransform::toSRGB(makeProfile(sRGBChromaticities, {}), rgb8));
  EXPECT_FALSE(ColorTransform::toSRGB(makeProfile(sRGBChromaticities, {}), rgba16));
  EXPECT_FALSE(ColorTransform::toSRGB(makeGreyProfile({}), grey8));
}

TEST(ColorTransform, isNotMadeFromAProfileForOtherChannels) {
  EXPECT_FALSE(ColorTransform::toSRGB(p3Profile(), grey8));
  EXPECT_FALSE(ColorTransform::toSRGB(makeGreyProfile({1.0}), rgb8));
}

TEST(ColorTransform, keepsGreyGreyWhileItChangesTheCurve) {
  const auto transform = ColorTransform::toSRGB(makeGreyProfile({1.0}), grey8);
  ASSERT_TRUE(transform);
  std::uint8_t value = 55;  // 0.2157 of the light, which sRGB stores as 0.502
  transform->convert(&value, &value, 1);
  EXPECT_NEAR(value, 128, 1);
}

TEST(PixelRowsColours, keepTheProfileWhereTheTargetHoldsIt) {
  PixelBuffer picture = makePicture(4, 4, rgb8);
  picture.iccProfile = p3Profile();
  const PixelRows rows(picture, {0, 0, 4, 4}, rgb8, ProfileSupport::embedded);
  EXPECT_TRUE(std::ranges::equal(rows.iccProfile(), p3Profile()));
  EXPECT_EQ(rows.row(0, nullptr), picture.row(0));
}

TEST(PixelRowsColours, becomeSRGBWhereTheTargetHoldsNoProfile) {
  PixelBuffer picture = PixelBuffer::create(1, 1, rgb8);
  picture.iccProfile = p3Profile();
  picture.row(0)[0] = 200;
  picture.row(0)[1] = 100;
  picture.row(0)[2] = 50;
  const PixelRows rows(picture, {0, 0, 1, 1}, {Channels::rgba, Depth::sixteen},
                       ProfileSupport::none);
  EXPECT_TRUE(rows.iccProfile().empty());
  Bytes scratch(rows.scratchBytes());
  const auto* pixel = reinterpret_cast<const std::uint16_t*>(rows.row(0, scratch.data()));
  EXPECT_NEAR(pixel[0] / 257, 215, 2);
  EXPECT_EQ(pixel[3], 65'535);
}

TEST(PixelRowsColours, becomeSRGBWhenGreyWithAProfileIsMadeRGB) {
  PixelBuffer picture = PixelBuffer::create(1, 1, grey8);
  picture.iccProfile = makeGreyProfile({1.0});
  picture.row(0)[0] = 55;
  const PixelRows rows(picture, {0, 0, 1, 1}, rgb8, ProfileSupport::embedded);
  EXPECT_TRUE(rows.iccProfile().empty());
  Bytes scratch(rows.scratchBytes());
  EXPECT_NEAR(rows.row(0, scratch.data())[2], 128, 1);
}

TEST(CmykConversion, withoutAProfileIsWhatTheInksLeaveOfWhite) {
  const CmykConversion ink({}, Depth::eight, InkPolarity::zeroIsNone);
  const Bytes inks = {0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 255, 51, 102, 0, 128};
  Bytes colors(12);
  ink.convert(inks.data(), colors.data(), 4);
  EXPECT_EQ(colors, (Bytes{255, 255, 255, 0, 255, 255, 0, 0, 0, 102, 76, 127}));

  const CmykConversion inverted({}, Depth::eight, InkPolarity::zeroIsFull);
  const Bytes whites = {255, 255, 255, 255, 0, 255, 255, 255};
  inverted.convert(whites.data(), colors.data(), 2);
  EXPECT_EQ(Bytes(colors.begin(), colors.begin() + 6), (Bytes{255, 255, 255, 0, 255, 255}));
}

TEST(CmykConversion, withoutAProfileHoldsForSixteenBits) {
  const CmykConversion ink({}, Depth::sixteen, InkPolarity::zeroIsNone);
  const std::array<std::uint16_t, 4> inks = {65'535, 0, 32'768, 0};
  std::array<std::uint16_t, 3> colors{};
  ink.convert(reinterpret_cast<const std::uint8_t*>(inks.data()),
              reinterpret_cast<std::uint8_t*>(colors.data()), 1);
  EXPECT_EQ(colors, (std::array<std::uint16_t, 3>{0, 65'535, 32'767}));
}

TEST(CmykConversion, goesThroughTheProfileWhenThereIsOne) {
  const Bytes profile = makeCmykTestProfile();
  ASSERT_EQ(kindOfProfile(profile), ProfileKind::cmyk);
  const CmykConversion conversion(profile, Depth::eight, InkPolarity::zeroIsNone);
  // In the test profile cyan ink alone darkens, and the others leave no trace.
  const Bytes inks = {0, 0, 0, 0, 0, 255, 255, 255, 255, 0, 0, 0};
  Bytes colors(9);
  conversion.convert(inks.data(), colors.data(), 3);
  for (std::size_t i = 0; i < 6; ++i)
    EXPECT_GE(colors[i], 253) << i;
  for (std::size_t i = 6; i < 9; ++i)
    EXPECT_LE(colors[i], 2) << i;

  const CmykConversion inverted(profile, Depth::eight, InkPolarity::zeroIsFull);
  inverted.convert(inks.data(), colors.data(), 1);
  EXPECT_LE(colors[0], 2);
}

}  // namespace
}  // namespace kestrivane::imageTesting

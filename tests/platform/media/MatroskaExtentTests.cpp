#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/media/MatroskaExtent.hpp"

namespace kestrivane::mediaTesting {
namespace {

struct ExtentCase {
  std::string name;
  std::vector<std::uint8_t> bytes;
  std::optional<std::uint64_t> extent;
};

class MatroskaExtents : public testing::TestWithParam<ExtentCase> {};

TEST_P(MatroskaExtents, areReadFromTheBeginning) {
  EXPECT_EQ(matroskaExtent(GetParam().bytes), GetParam().extent);
}

INSTANTIATE_TEST_SUITE_P(
    Files, MatroskaExtents,
    testing::Values(
        ExtentCase{
            "OneByte", {0x1A, 0x45, 0xDF, 0xA3, 0x81, 0xEE, 0x18, 0x53, 0x80, 0x67, 0x85}, 11 + 5},
        ExtentCase{"EightBytes",
                   {0x1A, 0x45, 0xDF, 0xA3, 0x80, 0x18, 0x53, 0x80, 0x67, 0x01, 0x00, 0x00, 0x01,
                    0x00, 0x00, 0x00, 0x02},
                   17 + 0x1'0000'0002},
        ExtentCase{
            "AfterAVoid",
            {0x1A, 0x45, 0xDF, 0xA3, 0x80, 0xEC, 0x81, 0x00, 0x18, 0x53, 0x80, 0x67, 0x40, 0x10},
            14 + 16},
        ExtentCase{"Live",
                   {0x1A, 0x45, 0xDF, 0xA3, 0x80, 0x18, 0x53, 0x80, 0x67, 0x01, 0xFF, 0xFF, 0xFF,
                    0xFF, 0xFF, 0xFF, 0xFF},
                   std::nullopt},
        ExtentCase{"TooShort", {0x1A, 0x45, 0xDF, 0xA3, 0x80, 0x18, 0x53, 0x80}, std::nullopt},
        ExtentCase{"ASkipBeyondTheEnd", {0x1A, 0x45, 0xDF, 0xA3, 0x88, 0x18}, std::nullopt},
        ExtentCase{"AnImpossibleNumber", {0x1A, 0x45, 0xDF, 0xA3, 0x00, 0x18}, std::nullopt},
        ExtentCase{"AnotherFormat", {0x18, 0x53, 0x80, 0x67, 0x85, 0x00}, std::nullopt},
        ExtentCase{"Nothing", {}, std::nullopt}),
    [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace kestrivane::mediaTesting

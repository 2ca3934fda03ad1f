#include <array>

#include <gtest/gtest.h>

#include "platform/linux/updates/VersionOrder.hpp"

namespace kestrivane {
namespace {

TEST(VersionOrder, OrdersFromOldToNew) {
  constexpr std::array versions{"",
                                "0.9",
                                "1.0-alpha",
                                "1.0b",
                                "1.0-beta2",
                                "1.0-beta10",
                                "1.0rc1",
                                "1.0",
                                "1.0.1",
                                "1.2",
                                "1.10",
                                "2.0-1a",
                                "2.0.1",
                                "2025.11",
                                "99999999999999999999999999",
                                "100000000000000000000000000"};
  for (std::size_t i = 0; i < versions.size(); ++i) {
    for (std::size_t j = 0; j < versions.size(); ++j)
      EXPECT_EQ(compareVersions(versions[i], versions[j]), i <=> j)
          << versions[i] << " and " << versions[j];
  }
}

TEST(VersionOrder, OverlooksHowPartsAreSeparatedAndZerosAtTheirStart) {
  EXPECT_EQ(compareVersions("1.0", "1"), std::weak_ordering::equivalent);
  EXPECT_EQ(compareVersions("1.0.0", "1_0"), std::weak_ordering::equivalent);
  EXPECT_EQ(compareVersions("1.02", "1.2"), std::weak_ordering::equivalent);
  EXPECT_EQ(compareVersions("v1.2", "v1.2.0"), std::weak_ordering::equivalent);
  EXPECT_EQ(compareVersions("1.0-beta-2", "1.0beta2"), std::weak_ordering::equivalent);
}

}  // namespace
}  // namespace kestrivane

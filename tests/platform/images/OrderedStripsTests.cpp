#include <atomic>
#include <optional>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/images/OrderedStrips.hpp"

namespace kestrivane {
namespace {

TEST(OrderedStrips, handsEveryStripOnOnceAndInOrder) {
  for (const std::size_t threads : {1U, 2U, 8U}) {
    OrderedStrips strips(1000, threads);
    std::vector<std::size_t> handedOn;
    strips.run([&] {
      while (const std::optional<std::size_t> strip = strips.take())
        strips.inOrder(*strip, [&] { handedOn.push_back(*strip); });
    });
    ASSERT_EQ(handedOn.size(), 1000);
    for (std::size_t i = 0; i < handedOn.size(); ++i)
      EXPECT_EQ(handedOn[i], i);
  }
}

TEST(OrderedStrips, throwsWhatWorkThrowsAndEndsTheOthers) {
  for (const std::size_t threads : {1U, 2U, 8U}) {
    OrderedStrips strips(1000, threads);
    std::atomic<std::size_t> handedOn = 0;
    EXPECT_THROW(strips.run([&] {
      while (const std::optional<std::size_t> strip = strips.take()) {
        if (*strip == 100) throw std::runtime_error("strip 100");
        strips.inOrder(*strip, [&] { ++handedOn; });
      }
    }),
                 std::runtime_error);
    EXPECT_LE(handedOn, 100);
  }
}

TEST(OrderedStrips, throwsWhatHandingOnThrows) {
  OrderedStrips strips(1000, 8);
  EXPECT_THROW(strips.run([&] {
    while (const std::optional<std::size_t> strip = strips.take())
      strips.inOrder(*strip, [&] {
        if (*strip == 5) throw std::runtime_error("strip 5");
      });
  }),
               std::runtime_error);
}

}  // namespace
}  // namespace kestrivane

#include <random>

#include <gtest/gtest.h>
#include <libdeflate.h>

#include "platform/linux/images/PngDeflater.hpp"
#include "tests/platform/images/ImageTesting.hpp"

namespace kestrivane::png {
namespace {

using imageTesting::Bytes;

/// The bytes of a whole stream, read by libdeflate; empty when it is not one.
Bytes inflated(const Bytes& stream, std::size_t expected) {
  Bytes bytes(expected);
  libdeflate_decompressor* const decompressor = libdeflate_alloc_decompressor();
  const libdeflate_result result = libdeflate_deflate_decompress(
      decompressor, stream.data(), stream.size(), bytes.data(), bytes.size(), nullptr);
  libdeflate_free_decompressor(decompressor);
  return result == LIBDEFLATE_SUCCESS ? bytes : Bytes();
}

/// From evenly random, which is stored as it is, to almost constant.
Bytes randomBytes(std::size_t count, unsigned values, std::mt19937& random) {
  Bytes bytes(count);
  for (std::uint8_t& byte : bytes)
    byte = static_cast<std::uint8_t>(random() % values);
  return bytes;
}

TEST(PngDeflater, makesOneStreamOfManyStrips) {
  std::mt19937 random(1);
  for (const int level : {1, 2, 7}) {
    Deflater deflater(level);
    Bytes all;
    Bytes stream;
    // Sizes of one block and of many, and so many of them that blocks end at every bit of a byte.
    for (int round = 0; round < 60; ++round)
      for (const unsigned values : {1U, 2U, 11U, 256U}) {
        const Bytes strip =
            randomBytes(1 + random() % (round % 10 == 0 ? 300'000 : 3000), values, random);
        const auto compressed = deflater.compress(strip, StreamEnd::no);
        stream.insert(stream.end(), compressed.begin(), compressed.end());
        all.insert(all.end(), strip.begin(), strip.end());
      }
    const Bytes last = randomBytes(1000, 11, random);
    const auto compressed = deflater.compress(last, StreamEnd::yes);
    stream.insert(stream.end(), compressed.begin(), compressed.end());
    all.insert(all.end(), last.begin(), last.end());
    EXPECT_TRUE(inflated(stream, all.size()) == all) << "level " << level;
  }
}

TEST(PngDeflater, leavesTheStreamOpenUntilItsEnd) {
  const Bytes strip(5000, 7);
  Deflater deflater(2);
  const auto open = deflater.compress(strip, StreamEnd::no);
  EXPECT_TRUE(inflated(Bytes(open.begin(), open.end()), strip.size()).empty());
  const auto whole = deflater.compress(strip, StreamEnd::yes);
  EXPECT_TRUE(inflated(Bytes(whole.begin(), whole.end()), strip.size()) == strip);
}

}  // namespace
}  // namespace kestrivane::png

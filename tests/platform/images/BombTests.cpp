// Small files that claim to be huge pictures: refused from the header, before memory is taken.
//
// Each is opened in a child process of its own, which reports by how much its address space has
// grown at most: memory that was taken counts even if nobody wrote to it.
#include <algorithm>
#include <array>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include "platform/linux/images/CodecTable.hpp"
#include "platform/linux/images/LinuxImageIO.hpp"
#include "platform/linux/images/LittleEndian.hpp"
#include "tests/platform/images/ImageTesting.hpp"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KESTRIVANE_SHADOW_MEMORY 1
#endif

namespace kestrivane::imageTesting {
namespace {

using littleEndian::append16;
using littleEndian::append32;

constexpr std::uint64_t mebibyte = 1024 * 1024;
constexpr std::uint32_t bombSide = 60'000;

/// The field of /proc/self/status, in bytes.
std::uint64_t statusOf(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string name; status >> name;)
    if (std::uint64_t kibibytes = 0; name == field + ":" && status >> kibibytes)
      return kibibytes * 1024;
  throw std::runtime_error("no " + field);
}

struct Opened {
  bool hasPicture = false;
  std::uint64_t memory = 0;    // the most that was taken, bytes
  std::uint64_t resident = 0;  // the most of it that was written to, bytes
};

/// Opens the file in a child process and decodes it.
Opened openInChild(const FileURL& url) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
  const pid_t child = ::fork();
  if (child == 0) {
    const std::uint64_t before = statusOf("VmSize");
    const std::uint64_t residentBefore = statusOf("VmRSS");
    const auto source = LinuxImageIO().createSource(url);
    Opened opened{.hasPicture = source != nullptr && source->createImage(0) != nullptr};
    opened.memory = statusOf("VmPeak") - before;
    opened.resident = statusOf("VmHWM") - residentBefore;
    const bool sent = ::write(ends[1], &opened, sizeof opened) == sizeof opened;
    ::_exit(sent ? 0 : 1);
  }
  ::close(ends[1]);
  Opened opened;
  const auto received = ::read(ends[0], &opened, sizeof opened);
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (received != sizeof opened || status != 0) throw std::runtime_error("the child has died");
  return opened;
}

/// Which memory must stay small. Where the size is permitted and only the data is missing, memory
/// may be set aside for the picture before that shows.
enum class Measured { taken, written };

void expectRefused(const Bytes& bytes, Measured measured = Measured::taken) {
  ASSERT_NE(codecRecognising(std::span(bytes).first(std::min(bytes.size(), recognisedBytes))),
            nullptr);
  const TemporaryFolder folder;
  writeFile(folder / "bomb", bytes);
  const Opened opened = openInChild(folder / "bomb");
  EXPECT_FALSE(opened.hasPicture);
#ifdef KESTRIVANE_SHADOW_MEMORY
  static_cast<void>(measured);
  GTEST_SKIP() << "refused; memory is not measured under sanitizers, which take their own";
#else
  EXPECT_LT(measured == Measured::taken ? opened.memory : opened.resident, 64 * mebibyte);
#endif
}

void appendBig32(Bytes& bytes, std::uint32_t value) {
  for (const unsigned shift : {24U, 16U, 8U, 0U})
    bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

void appendText(Bytes& bytes, std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
}

/// `count` zeros in the format of zlib.
Bytes deflatedZeros(std::uint64_t count) {
  z_stream stream{};
  deflateInit(&stream, Z_DEFAULT_COMPRESSION);
  Bytes zeros(mebibyte), output(count / 100 + 1024);
  stream.next_out = output.data();
  stream.avail_out = static_cast<uInt>(output.size());
  while (stream.total_in < count) {
    const std::uint64_t left = count - stream.total_in;
    stream.next_in = zeros.data();
    stream.avail_in = static_cast<uInt>(std::min<std::uint64_t>(left, zeros.size()));
    deflate(&stream, left > zeros.size() ? Z_NO_FLUSH : Z_FINISH);
  }
  output.resize(stream.total_out);
  deflateEnd(&stream);
  return output;
}

void appendChunk(Bytes& png, std::string_view name, const Bytes& content) {
  appendBig32(png, static_cast<std::uint32_t>(content.size()));
  const std::size_t start = png.size();
  appendText(png, name);
  png.insert(png.end(), content.begin(), content.end());
  appendBig32(png, static_cast<std::uint32_t>(
                       crc32(0, png.data() + start, static_cast<uInt>(png.size() - start))));
}

/// A black square of one bit a pixel.
Bytes blackPNG(std::uint32_t edge) {
  Bytes png{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  Bytes header;
  appendBig32(header, edge);
  appendBig32(header, edge);
  header.insert(header.end(), {1, 0, 0, 0, 0});
  appendChunk(png, "IHDR", header);
  appendChunk(png, "IDAT", deflatedZeros(std::uint64_t{edge} * ((edge + 7) / 8 + 1)));
  appendChunk(png, "IEND", {});
  return png;
}

/// A black square in one strip; `compression` is the number that TIFF 6.0 gives it.
Bytes blackTIFF(std::uint32_t edge, std::uint32_t compression, const Bytes& strip) {
  Bytes tiff{'I', 'I', 42, 0, 8, 0, 0, 0};
  const std::vector<std::array<std::uint32_t, 2>> tags{
      {256, edge},        {257, edge}, {258, 1},
      {259, compression}, {262, 1},    {273, 0},
      {277, 1},           {278, edge}, {279, static_cast<std::uint32_t>(strip.size())}};
  append16(tiff, static_cast<std::uint16_t>(tags.size()));
  const auto stripOffset = static_cast<std::uint32_t>(tiff.size() + tags.size() * 12 + 4);
  for (const auto& [tag, value] : tags) {
    append16(tiff, static_cast<std::uint16_t>(tag));
    append16(tiff, 4);  // LONG
    append32(tiff, 1);
    append32(tiff, tag == 273 ? stripOffset : value);
  }
  append32(tiff, 0);
  tiff.insert(tiff.end(), strip.begin(), strip.end());
  return tiff;
}

/// LZW of TIFF 6.0: codes of nine bits, each zero by itself, cleared often enough to stay so short.
Bytes lzwZeros(std::size_t count) {
  constexpr std::uint32_t clear = 256, end = 257;
  Bytes packed;
  std::uint32_t bits = 0;
  unsigned held = 0;
  const auto put = [&](std::uint32_t code) {
    bits = bits << 9 | code;
    for (held += 9; held >= 8; held -= 8)
      packed.push_back(static_cast<std::uint8_t>(bits >> (held - 8)));
  };
  for (std::size_t i = 0; i < count; ++i) {
    if (i % 200 == 0) put(clear);
    put(0);
  }
  put(end);
  put(0);
  return packed;
}

Bytes bmpHeader(std::uint32_t width, std::uint32_t height, std::uint16_t bits,
                std::uint32_t compression) {
  Bytes bmp{'B', 'M'};
  for (const std::uint32_t field : {0U, 0U, 54U, 40U, width, height})
    append32(bmp, field);
  append16(bmp, 1);
  append16(bmp, bits);
  append32(bmp, compression);
  bmp.resize(54);
  return bmp;
}

TEST(Bomb, isNoticedByTheMeasurement) {
#ifdef KESTRIVANE_SHADOW_MEMORY
  GTEST_SKIP() << "memory is not measured under sanitizers, which take their own";
#endif
  const TemporaryFolder folder;
  writeFile(folder / "permitted", blackPNG(12'000));
  const Opened opened = openInChild(folder / "permitted");
  EXPECT_TRUE(opened.hasPicture);
  EXPECT_GT(opened.memory, 128 * mebibyte);
}

TEST(Bomb, ofHalfAMegabyteOfPNG) {
  const Bytes png = blackPNG(bombSide);
  EXPECT_LT(png.size(), 512 * 1024U);
  expectRefused(png);
}

TEST(Bomb, ofAChunkThatClaimsTwoGigabytes) {
  Bytes png = blackPNG(1);
  constexpr std::size_t afterHeader = 8 + 4 + 4 + 13 + 4;
  Bytes chunk;
  appendBig32(chunk, 0x7000'0000);
  appendText(chunk, "eXIf");
  png.insert(png.begin() + afterHeader, chunk.begin(), chunk.end());
  expectRefused(png);
}

TEST(Bomb, insideAnIcon) {
  const Bytes png = blackPNG(bombSide);
  Bytes icon{0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 1, 0, 32, 0};
  append32(icon, static_cast<std::uint32_t>(png.size()));
  append32(icon, 22);
  icon.insert(icon.end(), png.begin(), png.end());
  expectRefused(icon);
}

TEST(Bomb, ofGIF) {
  Bytes gif;
  appendText(gif, "GIF89a");
  append16(gif, bombSide);
  append16(gif, bombSide);
  gif.insert(gif.end(), {0x80, 0, 0, 0, 0, 0, 255, 255, 255, ','});
  for (const std::uint32_t field : {0U, 0U, bombSide, bombSide})
    append16(gif, static_cast<std::uint16_t>(field));
  // One block of zeros: clear, 0, 0, 0 and the end.
  gif.insert(gif.end(), {0, 2, 3, 0x04, 0x00, 0x05, 0, ';'});
  expectRefused(gif);
}

TEST(Bomb, ofTIFFWithDeflate) {
  expectRefused(blackTIFF(bombSide, 8, deflatedZeros(std::uint64_t{bombSide} * bombSide / 8)));
}

TEST(Bomb, ofTIFFWithLZW) {
  expectRefused(blackTIFF(bombSide, 5, lzwZeros(400'000)));
}

TEST(Bomb, ofTIFFWhoseStripIsSaidToBeLargerThanTheFile) {
  Bytes tiff = blackTIFF(16'000, 8, Bytes(100));
  tiff.at(10 + 8 * 12 + 11) = 0x7F;  // the highest byte of the strip's length
  expectRefused(tiff, Measured::written);
}

TEST(Bomb, ofBMP) {
  expectRefused(bmpHeader(bombSide, bombSide, 1, 0));
  expectRefused(bmpHeader(0x7FFFFFFF, 0x7FFFFFFF, 32, 0));
  expectRefused(bmpHeader(16'000, 16'000, 24, 0));  // permitted, if only the pixels were there
}

TEST(Bomb, ofAnIconThatPointsOutsideItself) {
  Bytes icon{0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 1, 0, 32, 0};
  append32(icon, 0xFFFFFFFF);
  append32(icon, 0x7FFFFFFF);
  expectRefused(icon);
  Bytes full{0, 0, 1, 0, 0xFF, 0xFF};  // a directory of the greatest length, cut short
  expectRefused(full);
}

TEST(Bomb, ofLosslessWebP) {
  // The largest that VP8L can say, 16384 x 16384, is just permitted; the data is missing.
  Bytes webp;
  appendText(webp, "RIFF");
  append32(webp, 26);
  appendText(webp, "WEBPVP8L");
  append32(webp, 13);
  webp.insert(webp.end(), {0x2F, 0xFF, 0xFF, 0xFF, 0x0F, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  expectRefused(webp, Measured::written);
}

TEST(Bomb, ofHEIC) {
  Bytes heic = readFile(sample("photo.heic"));
  const auto property = std::ranges::search(heic, std::string_view("ispe"),
                                            [](auto byte, auto c) { return byte == c; });
  ASSERT_FALSE(property.empty());
  Bytes size;
  appendBig32(size, bombSide);
  appendBig32(size, bombSide);
  std::ranges::copy(size, property.begin() + 8);  // after the name, version and flags
  expectRefused(heic);
}

}  // namespace
}  // namespace kestrivane::imageTesting

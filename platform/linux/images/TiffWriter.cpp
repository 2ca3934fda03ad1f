#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include <algorithm>
#include <cstdio>

#include "platform/linux/images/OrderedStrips.hpp"
#include "platform/linux/images/TiffCodec.hpp"
#include "platform/linux/images/TiffHandle.hpp"
#include "platform/linux/images/TiffLzw.hpp"

namespace kestrivane::tiff {
namespace {

constexpr std::size_t stripBytes = 256 * 1024;

/// Each takes up to 1 MB: a strip before and after compression.
constexpr std::size_t maximumThreads = 8;

/// The output as a file with an end, to which libtiff seeks.
struct Target {
  ImageOutput& output;
  std::uint64_t size = 0;

  static tmsize_t write(thandle_t user, void* bytes, tmsize_t count) {
    auto& self = *static_cast<Target*>(user);
    const auto size = static_cast<std::size_t>(count);
    if (!self.output.write({static_cast<const std::uint8_t*>(bytes), size})) return -1;
    self.size = std::max(self.size, self.output.position());
    return count;
  }

  static toff_t seek(thandle_t user, toff_t offset, int whence) {
    auto& self = *static_cast<Target*>(user);
    if (whence == SEEK_CUR) offset += self.output.position();
    if (whence == SEEK_END) offset += self.size;
    return self.output.seek(offset) ? offset : static_cast<toff_t>(-1);
  }
};

void setTags(TIFF* file, const PixelRows& picture, std::size_t stripRows) {
  const PixelLayout layout = picture.layout();
  TIFFSetField(file, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(picture.width()));
  TIFFSetField(file, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(picture.height()));
  TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, static_cast<int>(layout.depth));
  TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(layout.channels));
  TIFFSetField(file, TIFFTAG_PHOTOMETRIC,
               layout.isGrey() ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
  if (layout.hasAlpha()) {
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    TIFFSetField(file, TIFFTAG_EXTRASAMPLES, 1, &alpha);
  }
  TIFFSetField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(file, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  TIFFSetField(file, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
  TIFFSetField(file, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
  TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(stripRows));
  const std::span<const std::uint8_t> profile = picture.iccProfile();
  if (!profile.empty())
    TIFFSetField(file, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(profile.size()),
                 profile.data());
}

/// The horizontal differencing of a row (TIFF 6.0, section 14).
template <typename Channel>
void storeDifferences(const std::uint8_t* row, std::size_t pixels, std::size_t channels,
                      std::uint8_t* target) {
  const auto* const from = reinterpret_cast<const Channel*>(row);
  auto* const to = reinterpret_cast<Channel*>(target);
  std::copy_n(from, channels, to);
  for (std::size_t i = channels; i < pixels * channels; ++i)
    to[i] = static_cast<Channel>(from[i] - from[i - channels]);
}

void writeStrips(TIFF* file, const PixelRows& picture, std::size_t stripRows, std::size_t threads) {
  const auto differencesOf = picture.layout().depth == Depth::eight
                                 ? storeDifferences<std::uint8_t>
                                 : storeDifferences<std::uint16_t>;
  OrderedStrips strips((picture.height() + stripRows - 1) / stripRows, threads);
  strips.run([&] {
    LzwEncoder encoder;
    std::vector<std::uint8_t> scratch(picture.scratchBytes());
    std::vector<std::uint8_t> differences(stripRows * picture.rowBytes());
    while (const std::optional<std::size_t> strip = strips.take()) {
      const std::size_t first = *strip * stripRows;
      const std::size_t count = std::min(stripRows, picture.height() - first);
      for (std::size_t line = 0; line < count; ++line)
        differencesOf(picture.row(first + line, scratch.data()), picture.width(),
                      picture.layout().channelCount(),
                      differences.data() + line * picture.rowBytes());
      const std::span<std::uint8_t> stored =
          encoder.encode(std::span(differences).first(count * picture.rowBytes()));
      strips.inOrder(*strip, [&] {
        if (TIFFWriteRawStrip(file, static_cast<std::uint32_t>(*strip), stored.data(),
                              static_cast<tmsize_t>(stored.size())) < 0)
          throw ImageError("the TIFF cannot be written");
      });
    }
  });
}

}  // namespace

PixelLayout encodedLayout(PixelLayout source) {
  return source;
}

void encodeOn(std::size_t threads, const PixelRows& picture, ImageOutput& output) {
  Target target{output};
  const Access access{
      .user = &target,
      .read = [](thandle_t, void*, tmsize_t) -> tmsize_t { return 0; },
      .write = Target::write,
      .seek = Target::seek,
      .size = [](thandle_t user) -> toff_t { return static_cast<Target*>(user)->size; }};
  Reports reports;
  const Handle file = open(access, "w", reports);
  if (!file) throw ImageError("the TIFF cannot be started");
  const std::size_t stripRows =
      std::clamp<std::size_t>(stripBytes / picture.rowBytes(), 1, picture.height());
  setTags(file.get(), picture, stripRows);
  writeStrips(file.get(), picture, stripRows, threads);
  if (TIFFWriteDirectory(file.get()) == 0 || reports.error)
    throw ImageError("the TIFF cannot be finished");
}

void encode(PixelRows& picture, ImageOutput& output) {
  encodeOn(maximumThreads, picture, output);
}

}  // namespace kestrivane::tiff

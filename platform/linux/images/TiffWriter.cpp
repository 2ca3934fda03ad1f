#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include <algorithm>
#include <cstdio>

#include "platform/linux/images/TiffCodec.hpp"
#include "platform/linux/images/TiffHandle.hpp"

namespace kestrivane::tiff {
namespace {

constexpr std::size_t stripBytes = 256 * 1024;

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

void setTags(TIFF* file, const PixelRows& picture) {
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
  const std::size_t rows = std::max<std::size_t>(stripBytes / picture.rowBytes(), 1);
  TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rows));
  const std::span<const std::uint8_t> profile = picture.iccProfile();
  if (!profile.empty())
    TIFFSetField(file, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(profile.size()),
                 profile.data());
}

}  // namespace

PixelLayout encodedLayout(PixelLayout source) {
  return source;
}

void encode(PixelRows& picture, ImageOutput& output) {
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
  setTags(file.get(), picture);
  std::vector<std::uint8_t> scratch(picture.scratchBytes());
  std::vector<std::uint8_t> row(picture.rowBytes());
  for (std::size_t y = 0; y < picture.height(); ++y) {
    // A copy, because libtiff takes the differences in place.
    std::copy_n(picture.row(y, scratch.data()), row.size(), row.data());
    if (TIFFWriteScanline(file.get(), row.data(), static_cast<std::uint32_t>(y), 0) < 0)
      throw ImageError("the TIFF cannot be written");
  }
  if (TIFFWriteDirectory(file.get()) == 0 || reports.error)
    throw ImageError("the TIFF cannot be finished");
}

}  // namespace kestrivane::tiff

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>

#include "platform/linux/images/ExifOrientation.hpp"
#include "platform/linux/images/TiffCodec.hpp"
#include "platform/linux/images/TiffHandle.hpp"
#include "platform/linux/images/TiffSamples.hpp"
#include "platform/linux/images/UprightRows.hpp"
#include "platform/linux/images/ZlibCheck.hpp"

namespace kestrivane::tiff {
namespace {

/// The most bytes of one strip or tile, of all its planes together.
constexpr std::uint64_t maximumBlockBytes = std::uint64_t{1} << 31;

struct Source {
  const ImageInput& input;
  std::uint64_t position = 0;

  static tmsize_t read(thandle_t user, void* target, tmsize_t count) {
    auto& self = *static_cast<Source*>(user);
    const std::size_t done = self.input.readUpTo(
        self.position, {static_cast<std::uint8_t*>(target), static_cast<std::size_t>(count)});
    self.position += done;
    return static_cast<tmsize_t>(done);
  }

  static toff_t seek(thandle_t user, toff_t offset, int whence) {
    auto& self = *static_cast<Source*>(user);
    if (whence == SEEK_CUR) offset += self.position;
    if (whence == SEEK_END) offset += self.input.size();
    self.position = offset;
    return offset;
  }
};

class Decoder {
 public:
  explicit Decoder(const ImageInput& input) : source_{input} {
    const Access access{
        .user = &source_,
        .read = Source::read,
        .write = [](thandle_t, void*, tmsize_t) -> tmsize_t { return -1; },
        .seek = Source::seek,
        .size = [](thandle_t user) -> toff_t { return static_cast<Source*>(user)->input.size(); }};
    file_ = open(access, "rm", reports_);
    if (!file_) throw ImageError("the TIFF's header is damaged");
  }

  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() = default;

  PixelBuffer decode() {
    readFormat();
    checkArea(width_, height_);
    const Orientation orientation = orientationOfTag(tag<std::uint16_t>(TIFFTAG_ORIENTATION));
    reports_ = {};  // those so far are about the header: unknown tags and the like
    if (isDeflated_) checkDeflatedBlocks();
    PixelBuffer picture = isReadDirectly(format_) ? decodeDirectly(orientation)
                                                  : upright(decodeThroughLibrary(), orientation);
    if (reports_.error || reports_.warning) throw ImageError("the TIFF's data is damaged");
    if (picture.iccProfile.empty()) picture.iccProfile = profile();
    if (format_.photometric == PHOTOMETRIC_SEPARATED) picture.iccProfile.clear();
    return picture;
  }

 private:
  template <typename Value>
  Value tag(std::uint32_t name) const {
    Value value{};
    TIFFGetFieldDefaulted(file_.get(), name, &value);
    return value;
  }

  void readFormat() {
    TIFF* const file = file_.get();
    width_ = tag<std::uint32_t>(TIFFTAG_IMAGEWIDTH);
    height_ = tag<std::uint32_t>(TIFFTAG_IMAGELENGTH);
    const auto compression = tag<std::uint16_t>(TIFFTAG_COMPRESSION);
    if (compression == COMPRESSION_JPEG)
      TIFFSetField(file, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    // By its other way, libdeflate, libtiff overlooks data that overruns a strip, and leaves the
    // strip's last pixels unset.
    isDeflated_ = compression == COMPRESSION_ADOBE_DEFLATE || compression == COMPRESSION_DEFLATE;
    if (isDeflated_) TIFFSetField(file, TIFFTAG_DEFLATE_SUBCODEC, DEFLATE_SUBCODEC_ZLIB);
    format_.photometric = tag<std::uint16_t>(TIFFTAG_PHOTOMETRIC);
    if (format_.photometric == PHOTOMETRIC_YCBCR && compression == COMPRESSION_JPEG)
      format_.photometric = PHOTOMETRIC_RGB;
    format_.bits = tag<std::uint16_t>(TIFFTAG_BITSPERSAMPLE);
    format_.sampleFormat = tag<std::uint16_t>(TIFFTAG_SAMPLEFORMAT);
    format_.samples = tag<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL);
    format_.planes =
        tag<std::uint16_t>(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE ? format_.samples : 1U;
    format_.inkSet = tag<std::uint16_t>(TIFFTAG_INKSET);
    std::uint16_t extraCount = 0;
    const std::uint16_t* extras = nullptr;
    TIFFGetFieldDefaulted(file, TIFFTAG_EXTRASAMPLES, &extraCount, &extras);
    if (extraCount > 0) format_.firstExtra = extras[0];
    if (format_.photometric == PHOTOMETRIC_PALETTE)
      format_.hasColorMap = TIFFGetField(file, TIFFTAG_COLORMAP, &format_.colorMap[0],
                                         &format_.colorMap[1], &format_.colorMap[2]) != 0;
  }

  std::vector<std::uint8_t> profile() const {
    std::uint32_t size = 0;
    const std::uint8_t* bytes = nullptr;
    if (TIFFGetField(file_.get(), TIFFTAG_ICCPROFILE, &size, &bytes) == 0) return {};
    return {bytes, bytes + size};
  }

  /// libtiff stops when it has enough bytes, before the checksum that follows them.
  void checkDeflatedBlocks() const {
    TIFF* const file = file_.get();
    const bool isTiled = TIFFIsTiled(file) != 0;
    const std::uint32_t count = isTiled ? TIFFNumberOfTiles(file) : TIFFNumberOfStrips(file);
    const std::uint64_t bytes = isTiled ? TIFFTileSize64(file) : TIFFStripSize64(file);
    for (std::uint32_t block = 0; block < count; ++block)
      checkZlibStream(source_.input, TIFFGetStrileOffset(file, block),
                      TIFFGetStrileByteCount(file, block), bytes);
  }

  PixelBuffer decodeDirectly(Orientation orientation) {
    UprightRows picture(width_, height_, layoutOf(format_), orientation);
    RowMaker rows(format_, profile());
    if (TIFFIsTiled(file_.get()) != 0)
      readTiles(picture, rows);
    else if (format_.planes == 1)
      readScanlines(picture, rows);
    else
      readPlanarStrips(picture, rows);
    return picture.take();
  }

  void readScanlines(UprightRows& picture, RowMaker& rows) {
    allocateBlock(TIFFScanlineSize64(file_.get()), width_);
    for (std::uint32_t y = 0; y < height_; ++y, picture.advance()) {
      check(TIFFReadScanline(file_.get(), block_.get(), y, 0));
      rows.make(block_.get(), 0, width_, picture.next());
    }
  }

  void readPlanarStrips(UprightRows& picture, RowMaker& rows) {
    const std::uint32_t stripRows = std::min(tag<std::uint32_t>(TIFFTAG_ROWSPERSTRIP), height_);
    if (stripRows == 0) throw ImageError("the TIFF's strips are empty");
    allocateBlock(TIFFStripSize64(file_.get()), std::uint64_t{width_} * stripRows);
    const auto rowBytes = static_cast<std::size_t>(TIFFScanlineSize64(file_.get()));
    for (std::uint32_t y = 0; y < height_; y += stripRows) {
      const std::uint32_t lines = std::min(stripRows, height_ - y);
      for (std::uint16_t plane = 0; plane < format_.planes; ++plane)
        checkBlock(TIFFReadEncodedStrip(file_.get(), TIFFComputeStrip(file_.get(), y, plane),
                                        block_.get() + plane * planeBytes_,
                                        static_cast<tmsize_t>(planeBytes_)),
                   lines * rowBytes);
      for (std::uint32_t line = 0; line < lines; ++line, picture.advance())
        rows.make(block_.get() + line * rowBytes, planeBytes_, width_, picture.next());
    }
  }

  void readTiles(UprightRows& picture, RowMaker& rows) {
    const auto tileWidth = tag<std::uint32_t>(TIFFTAG_TILEWIDTH);
    const auto tileHeight = tag<std::uint32_t>(TIFFTAG_TILELENGTH);
    checkArea(tileWidth, tileHeight);
    allocateBlock(TIFFTileSize64(file_.get()), std::uint64_t{tileWidth} * tileHeight);
    const auto rowBytes = static_cast<std::size_t>(TIFFTileRowSize64(file_.get()));
    const PixelLayout layout = layoutOf(format_);
    auto besideEachOther = PixelBuffer::create(width_, std::min(tileHeight, height_), layout);
    for (std::uint32_t y = 0; y < height_; y += tileHeight) {
      const std::uint32_t lines = std::min(tileHeight, height_ - y);
      for (std::uint32_t x = 0; x < width_; x += tileWidth) {
        for (std::uint16_t plane = 0; plane < format_.planes; ++plane)
          checkBlock(TIFFReadEncodedTile(file_.get(), TIFFComputeTile(file_.get(), x, y, 0, plane),
                                         block_.get() + plane * planeBytes_,
                                         static_cast<tmsize_t>(planeBytes_)),
                     planeBytes_);
        for (std::uint32_t line = 0; line < lines; ++line)
          rows.make(block_.get() + line * rowBytes, planeBytes_, std::min(tileWidth, width_ - x),
                    besideEachOther.row(line) + x * layout.bytesPerPixel());
      }
      for (std::uint32_t line = 0; line < lines; ++line, picture.advance())
        std::copy_n(besideEachOther.row(line), besideEachOther.rowBytes(), picture.next());
    }
  }

  /// Takes memory for `planes` blocks of `bytes` bytes, which hold `pixels` pixels each.
  void allocateBlock(std::uint64_t bytes, std::uint64_t pixels) {
    const std::uint64_t samples = format_.planes == 1 ? format_.samples : 1;
    const bool holdsAll = bytes >= (pixels * samples * format_.bits + 7) / 8;
    if (bytes == 0 || !holdsAll || bytes > maximumBlockBytes / format_.planes)
      throw ImageError("the TIFF's strips or tiles have an unexpected size");
    planeBytes_ = static_cast<std::size_t>(bytes);
    block_ = std::make_unique_for_overwrite<std::uint8_t[]>(planeBytes_ * format_.planes);
  }

  /// libtiff may hand out less than the block holds without a word.
  void checkBlock(tmsize_t bytesRead, std::size_t expected) const {
    check(bytesRead);
    if (static_cast<std::size_t>(bytesRead) < expected)
      throw ImageError("the TIFF's strips or tiles are cut short");
  }

  void check(tmsize_t result) const {
    if (result < 0 || reports_.error || reports_.warning)
      throw ImageError("the TIFF's data is damaged");
  }

  /// For what is seldom met (CIE L*a*b*, logarithmic, subsampled without JPEG): libtiff makes RGB
  /// of eight bits.
  PixelBuffer decodeThroughLibrary() {
    std::array<char, 1024> reason{};
    if (TIFFRGBAImageOK(file_.get(), reason.data()) == 0) throw ImageError(reason.data());
    PixelBuffer picture = PixelBuffer::create(width_, height_, {Channels::rgba, Depth::eight});
    auto* const raster = reinterpret_cast<std::uint32_t*>(picture.row(0));
    TIFFSetField(file_.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);  // we turn it ourselves
    if (TIFFReadRGBAImageOriented(file_.get(), width_, height_, raster, ORIENTATION_TOPLEFT, 1) ==
        0)
      throw ImageError("the TIFF's data is damaged");
    // The raster's numbers have red in their lowest byte.
    if constexpr (std::endian::native == std::endian::big)
      TIFFSwabArrayOfLong(raster, static_cast<tmsize_t>(picture.byteCount() / 4));
    return picture;
  }

  Source source_;
  Reports reports_;
  Handle file_;
  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  Format format_;
  bool isDeflated_ = false;
  std::unique_ptr<std::uint8_t[]> block_;
  std::size_t planeBytes_ = 0;
};

}  // namespace

bool recognise(std::span<const std::uint8_t> start) {
  if (start.size() < 8) return false;
  const bool littleEndian = start[0] == 'I' && start[1] == 'I' && start[3] == 0;
  const bool bigEndian = start[0] == 'M' && start[1] == 'M' && start[2] == 0;
  const std::uint8_t version = littleEndian ? start[2] : start[3];
  return (littleEndian || bigEndian) && (version == 42 || version == 43);
}

PixelBuffer decode(const ImageInput& input) {
  return Decoder(input).decode();
}

}  // namespace kestrivane::tiff

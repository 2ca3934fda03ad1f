#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngReader.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/images/ExifOrientation.hpp"
#include "platform/linux/images/PngChunkReader.hpp"
#include "platform/linux/images/PngColorSpace.hpp"
#include "platform/linux/images/PngExpander.hpp"
#include "platform/linux/images/PngHeader.hpp"
#include "platform/linux/images/PngInflater.hpp"
#include "platform/linux/images/PngReadAhead.hpp"
#include "platform/linux/images/PngUnfilter.hpp"
#include "platform/linux/images/UprightRows.hpp"

namespace kestrivane::png {
namespace {

/// The largest chunk besides those of pixels that is looked at.
constexpr std::size_t maximumContent = 8'000'000;

/// Every so many pixels across and down that are stored together, as a picture of their own.
struct Pass {
  std::size_t x;
  std::size_t y;
  std::size_t stepX;
  std::size_t stepY;

  std::size_t columns(const Header& header) const { return count(header.width, x, stepX); }
  std::size_t rows(const Header& header) const { return count(header.height, y, stepY); }
  bool isEmpty(const Header& header) const { return columns(header) == 0 || rows(header) == 0; }

 private:
  static std::size_t count(std::size_t size, std::size_t first, std::size_t step) {
    return size <= first ? 0 : (size - first + step - 1) / step;
  }
};

constexpr std::array<Pass, 1> allAtOnce{{{0, 0, 1, 1}}};
constexpr std::array<Pass, 7> adam7{{{0, 0, 8, 8},
                                     {4, 0, 8, 8},
                                     {0, 4, 4, 8},
                                     {2, 0, 4, 4},
                                     {0, 2, 2, 4},
                                     {1, 0, 2, 2},
                                     {0, 1, 1, 2}}};

std::span<const Pass> passesOf(const Header& header) {
  if (header.interlacing == Interlacing::adam7) return adam7;
  return allAtOnce;
}

/// The bytes of the whole stream when it is decompressed.
std::uint64_t streamBytes(const Header& header) {
  std::uint64_t bytes = 0;
  for (const Pass& pass : passesOf(header))
    if (!pass.isEmpty(header))
      bytes += pass.rows(header) * std::uint64_t{header.rowBytes(pass.columns(header)) + 1};
  return bytes;
}

/// The rows of a pass, one after the other, unfiltered.
class PassRows {
 public:
  PassRows(const Header& header, const Pass& pass, ReadAhead& stream)
      : stream_(stream),
        bytesPerPixel_(std::max<std::size_t>(header.bitsPerPixel() / 8, 1)),
        row_(header.rowBytes(pass.columns(header))),
        above_(row_.size()) {}

  /// Stays until the next call.
  const std::uint8_t* next() {
    std::swap(row_, above_);
    const std::uint8_t* const stored = stream_.take(row_.size() + 1);
    if (stored[0] > static_cast<std::uint8_t>(Filter::paeth))
      throw ImageError("the PNG has a row of an unknown filter");
    unfilter_(static_cast<Filter>(stored[0]),
              {{stored + 1, row_.size()}, above_.data(), bytesPerPixel_}, row_.data());
    return row_.data();
  }

 private:
  ReadAhead& stream_;
  const Unfilter unfilter_ = fastestUnfilter();
  const std::size_t bytesPerPixel_;
  std::vector<std::uint8_t> row_;
  std::vector<std::uint8_t> above_;
};

PixelBuffer readInOrder(const Header& header, const Expander& expander, Orientation orientation,
                        ReadAhead& stream) {
  UprightRows rows(header.width, header.height, expander.layout(), orientation);
  PassRows stored(header, allAtOnce[0], stream);
  for (std::size_t y = 0; y < header.height; ++y) {
    expander.expand(stored.next(), header.width, rows.next());
    rows.advance();
  }
  return rows.take();
}

PixelBuffer readInterlaced(const Header& header, const Expander& expander, ReadAhead& stream) {
  PixelBuffer picture = PixelBuffer::create(header.width, header.height, expander.layout());
  const std::size_t pixelBytes = picture.layout().bytesPerPixel();
  std::vector<std::uint8_t> expanded(picture.rowBytes());
  for (const Pass& pass : adam7) {
    if (pass.isEmpty(header)) continue;
    PassRows stored(header, pass, stream);
    for (std::size_t y = pass.y; y < header.height; y += pass.stepY) {
      expander.expand(stored.next(), pass.columns(header), expanded.data());
      const std::uint8_t* source = expanded.data();
      for (std::size_t x = pass.x; x < header.width; x += pass.stepX, source += pixelBytes)
        std::copy_n(source, pixelBytes, picture.row(y) + x * pixelBytes);
    }
  }
  return picture;
}

class Reader {
 public:
  explicit Reader(const ImageInput& input) : chunks_(input) {}

  PixelBuffer read() {
    chunks_.next();
    if (chunks_.type() != "IHDR" || chunks_.left() > maximumContent)
      throw ImageError("the PNG does not start with its header");
    const Header header = Header::parse(chunks_.readAll());
    Expander expander(header);
    for (chunks_.next(); chunks_.type() != "IDAT"; chunks_.next())
      takeBeforePixels(expander);
    if (expander.lacksPalette()) throw ImageError("the PNG lacks its palette");

    const Orientation orientation = orientation_.value_or(Orientation::topLeft);
    const bool isAsStored = !orientation_ || header.interlacing != Interlacing::none;
    PixelBuffer picture = readPixels(header, expander, orientation);
    for (; chunks_.type() != "IEND"; chunks_.next())
      takeAfterPixels();
    chunks_.finish();
    picture.iccProfile = colors_.profile(picture.layout());
    return isAsStored ? upright(std::move(picture), orientation_.value_or(Orientation::topLeft))
                      : std::move(picture);
  }

 private:
  void takeBeforePixels(Expander& expander) {
    const std::string_view type = chunks_.type();
    const bool isSmall = chunks_.left() <= maximumContent;
    if (type == "PLTE" && isSmall)
      expander.setPalette(chunks_.readAll());
    else if (type == "tRNS" && isSmall)
      expander.setTransparency(chunks_.readAll());
    else if (ColorSpace::concerns(type) && isSmall)
      colors_.take(type, chunks_.readAll());
    else
      takeAnywhere();
  }

  /// More pixels than the picture has, in chunks or in the stream, and a palette that comes too
  /// late are passed over.
  void takeAfterPixels() {
    if (chunks_.type() != "IDAT" && chunks_.type() != "PLTE") takeAnywhere();
  }

  void takeAnywhere() {
    if (chunks_.isCritical()) throw ImageError("the PNG has a chunk of an unknown kind");
    if (chunks_.type() == "eXIf" && !orientation_ && chunks_.left() <= maximumContent)
      orientation_ = exifOrientation(chunks_.readAll());
  }

  PixelBuffer readPixels(const Header& header, const Expander& expander, Orientation orientation) {
    Inflater inflater([this] { return compressedPixels(); });
    std::optional<PixelBuffer> picture;
    {
      ReadAhead stream(inflater, streamBytes(header));
      stream.start();
      picture = header.interlacing == Interlacing::none
                    ? readInOrder(header, expander, orientation, stream)
                    : readInterlaced(header, expander, stream);
    }
    inflater.finish();
    return *std::move(picture);
  }

  /// The next bytes of the stream, which may be spread over any number of chunks.
  std::span<const std::uint8_t> compressedPixels() {
    for (; chunks_.type() == "IDAT"; chunks_.next())
      if (const auto bytes = chunks_.read(); !bytes.empty()) return bytes;
    return {};
  }

  ChunkReader chunks_;
  ColorSpace colors_;
  std::optional<Orientation> orientation_;
};

}  // namespace

PixelBuffer read(const ImageInput& input) {
  return Reader(input).read();
}

}  // namespace kestrivane::png

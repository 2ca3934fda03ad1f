#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/linux/images/HeicCodec.hpp"
#include "platform/linux/images/HeicTileWriter.hpp"
#include "platform/linux/images/HeifFileWriter.hpp"
#include "platform/linux/images/OrderedStrips.hpp"

namespace kestrivane::heic {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// How a picture is cut into tiles, all of one size; those at the right and at the bottom stand out
/// of it.
struct Tiling {
  PixelRegion picture;
  std::size_t width;  ///< of a tile
  std::size_t height;
  std::size_t columns;
  std::size_t rows;

  explicit Tiling(const PixelRows& whole)
      : picture{0, 0, whole.width(), whole.height()},
        width(tileSize(picture.width)),
        height(tileSize(picture.height)),
        columns(ceilingOf(picture.width, width)),
        rows(ceilingOf(picture.height, height)) {}

  std::size_t count() const { return columns * rows; }

  /// What a tile holds of the picture.
  PixelRegion region(std::size_t tile) const {
    const std::size_t x = tile % columns * width;
    const std::size_t y = tile / columns * height;
    return {x, y, std::min(width, picture.width - x), std::min(height, picture.height - y)};
  }

 private:
  static std::size_t ceilingOf(std::size_t amount, std::size_t part) {
    return (amount + part - 1) / part;
  }

  static std::size_t tileSize(std::size_t pixels) {
    // The encoder takes many times the memory of what it is given, so that it is given little; at
    // 512 there is hardly less to gain, and starting it so often takes a fifth more time.
    constexpr std::size_t usual = 768;
    static_assert(maximumSide / usual < 256, "a grid has no more rows and columns");
    // Tiles of other sizes would be padded, and cut to size by grids of their own.
    constexpr std::size_t step = 16;
    constexpr std::size_t minimum = 64;
    const std::size_t share = ceilingOf(pixels, ceilingOf(pixels, usual));
    return std::max(minimum, ceilingOf(share, step) * step);
  }
};

/// Appends the size of the picture, each side in four bytes.
void appendSize(Bytes& bytes, const Tiling& tiling) {
  for (const std::size_t size : {tiling.picture.width, tiling.picture.height})
    for (int shift = 24; shift >= 0; shift -= 8)
      bytes.push_back(static_cast<std::uint8_t>(size >> shift));
}

/// The data of a grid (ISO/IEC 23008-12, 6.6.2.3).
Bytes gridData(const Tiling& tiling) {
  constexpr std::uint8_t version = 0;
  constexpr std::uint8_t longSizes = 1;
  Bytes data{version, longSizes, static_cast<std::uint8_t>(tiling.rows - 1),
             static_cast<std::uint8_t>(tiling.columns - 1)};
  appendSize(data, tiling);
  return data;
}

/// The size of a picture as a property says it, after version and flags.
Bytes sizeProperty(const Tiling& tiling) {
  Bytes body(4);
  appendSize(body, tiling);
  return body;
}

/// The tiles of one kind, of the colours or of the transparency, and the grid that they make.
class Layer {
 public:
  Layer(HeifFileWriter& file, const Tiling& tiling)
      : file_(file), grid_(file.addItem(fourCC("grid"), gridData(tiling), false)) {
    file.addProperty(grid_, {fourCC("ispe"), sizeProperty(tiling)});
  }

  ItemID grid() const { return grid_; }

  void add(const HeifFile& tile, ItemID item) {
    const ItemID added = file_.addItem(tile.typeOf(item), tile.dataOf(item), true);
    for (const HeifProperty& property : tile.propertiesOf(item)) {
      file_.addProperty(added, property);
      const bool isOfAll = property.type != fourCC("hvcC") && property.type != fourCC("ispe");
      if (tiles_.empty() && isOfAll) file_.addProperty(grid_, property);
    }
    tiles_.push_back(added);
  }

  void finish() { file_.addReference(fourCC("dimg"), grid_, tiles_); }

 private:
  HeifFileWriter& file_;
  ItemID grid_;
  std::vector<ItemID> tiles_;
};

void encodeGrid(PixelRows& picture, const Tiling& tiling, ImageOutput& output) {
  HeifFileWriter file;
  Layer colors(file, tiling);
  std::optional<Layer> alpha;
  if (picture.layout().hasAlpha()) alpha.emplace(file, tiling);
  Bytes fileType;

  constexpr std::size_t maximumThreads = 4;
  OrderedStrips strips(tiling.count(), maximumThreads);
  strips.run([&] {
    while (const auto number = strips.take()) {
      const Bytes encoded =
          encodeTile(picture, tiling.region(*number), tiling.width, tiling.height);
      strips.inOrder(*number, [&] {
        const HeifFile tile(encoded);
        colors.add(tile, tile.primary());
        if (alpha) alpha->add(tile, tile.sourcesOf(tile.primary(), fourCC("auxl")).at(0));
        HeifBytes boxes(encoded);
        const auto brands = takeBox(boxes).body.rest();  // the same for all
        fileType.assign(brands.begin(), brands.end());
      });
    }
  });
  picture.release();
  colors.finish();
  if (alpha) {
    alpha->finish();
    file.addReference(fourCC("auxl"), alpha->grid(), {colors.grid()});
  }
  file.write(fileType, colors.grid(), output);
}

}  // namespace

PixelLayout encodedLayout(PixelLayout source) {
  return source;
}

void encode(PixelRows& picture, ImageOutput& output) {
  const Tiling tiling(picture);
  if (tiling.count() > 1)
    encodeGrid(picture, tiling, output);
  else
    output.write(encodeTile(picture, tiling.picture, picture.width(), picture.height()));
}

}  // namespace kestrivane::heic

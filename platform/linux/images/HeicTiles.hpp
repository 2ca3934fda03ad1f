// The coded samples of an item of a HEIC row by row: of one HEVC picture, or of a grid of them
// (ISO/IEC 23008-12, 6.6.2.3), of which one row of tiles is decoded at a time.
//
// Thread-safety: none; the tiles of a row are decoded on several threads. Ownership: borrows the
// file, which outlives it; owns the tiles that are decoded.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/images/HeifFile.hpp"
#include "platform/linux/images/HevcDecoder.hpp"

namespace kestrivane::heic {

/// colour_type 'nclx' (ISO/IEC 14496-12, 12.1.5), numbers of ITU-T H.273.
struct CodedColors {
  int primaries = 2;
  int transfer = 2;
  HevcSignal signal;
};

class HeicTiles {
 public:
  /// Reads what the header says. Throws `ImageError` when the item is of an unknown kind, too large
  /// or contradicts itself.
  HeicTiles(const HeifFile& file, ItemID item);

  /// Of the whole picture, as it is stored.
  const HevcFormat& format() const { return format_; }
  /// Those of the item, else those of its first tile.
  std::optional<CodedColors> colorNumbers() const;
  /// An ICC profile; empty when there is none.
  std::span<const std::uint8_t> colorProfile() const;

  /// Goes to row `y` of the picture, decoding as needed; never back. Throws `ImageError` when the
  /// data is damaged.
  void seek(std::size_t y);

  /// Of the row that was sought, one tile.
  struct Part {
    const HevcPicture& picture;
    std::size_t y;       ///< in the tile
    std::size_t x;       ///< of its first pixel, in the whole picture
    std::size_t pixels;  ///< that are inside the whole picture
  };
  std::size_t partCount() const { return columns_; }
  Part part(std::size_t column) const;

 private:
  void readGrid();
  void decodeOnItsSide();
  void decodeBand(std::size_t band);
  std::unique_ptr<HevcPicture> decodeTile(ItemID tile) const;

  const HeifFile& file_;
  ItemID item_;
  HevcFormat format_;
  HevcFormat tileFormat_;
  std::vector<ItemID> tiles_;
  std::size_t columns_ = 1;
  std::vector<std::unique_ptr<HevcPicture>> band_;  // one row of tiles
  std::size_t nextBand_ = 0;
  std::size_t y_ = 0;  // of the row that was sought, in its band
};

}  // namespace kestrivane::heic

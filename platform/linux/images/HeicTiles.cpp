#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/HeicTiles.hpp"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

namespace kestrivane::heic {
namespace {

/// Memory of a large tile is given back in pieces of so many rows.
constexpr std::size_t releasedRows = 64;
constexpr std::size_t maximumThreads = 8;

bool isTurningOrCutting(std::uint32_t type) {
  return type == fourCC("irot") || type == fourCC("imir") || type == fourCC("clap");
}

bool isOnItsSide(const HeifFile& file, ItemID item) {
  const HeifProperty* const turn = file.findProperty(item, fourCC("irot"));
  return turn != nullptr && (HeifBytes(turn->body).u8() & 1) != 0;
}

void checkProperties(const HeifFile& file, ItemID item) {
  constexpr std::array known = {fourCC("ispe"), fourCC("hvcC"), fourCC("colr"),
                                fourCC("pixi"), fourCC("pasp"), fourCC("auxC"),
                                fourCC("irot"), fourCC("imir"), fourCC("clap")};
  for (const HeifProperty& property : file.propertiesOf(item))
    if (property.isEssential && std::ranges::find(known, property.type) == known.end())
      throw ImageError("the HEIC's picture has an unknown property");
}

HevcConfiguration configurationOf(const HeifFile& file, ItemID item) {
  if (file.typeOf(item) != fourCC("hvc1"))
    throw ImageError("the HEIC's picture is of an unknown kind");
  const HeifProperty* const found = file.findProperty(item, fourCC("hvcC"));
  if (found == nullptr) throw ImageError("the HEIC's picture cannot be decoded");
  return HevcConfiguration::parse(found->body);
}

/// What is said about a coded picture, with its size.
HevcFormat formatOf(const HeifFile& file, ItemID item) {
  checkProperties(file, item);
  const HevcConfiguration configuration = configurationOf(file, item);
  const HeifProperty* const found = file.findProperty(item, fourCC("ispe"));
  if (found == nullptr) throw ImageError("the HEIC's picture has no size");
  HeifBytes size(found->body);
  size.take(4);  // version and flags
  const std::size_t width = size.u32();
  const std::size_t height = size.u32();
  checkArea(width, height);
  return {width, height, configuration.chroma, configuration.bits};
}

/// Calls `function` with each number below `count`, on several threads, and throws what it throws.
template <typename Function>
void forEachAtOnce(std::size_t count, Function function) {
  std::atomic<std::size_t> next = 0;
  std::mutex mutex;
  std::exception_ptr failure;
  const auto work = [&] {
    try {
      for (std::size_t i = next++; i < count; i = next++)
        function(i);
    } catch (...) {
      next = count;
      const std::scoped_lock lock(mutex);
      failure = std::current_exception();
    }
  };
  {
    const std::size_t threads =
        std::min<std::size_t>({std::thread::hardware_concurrency(), count, maximumThreads});
    std::vector<std::jthread> helpers;
    try {
      while (helpers.size() + 1 < threads)
        helpers.emplace_back(work);
    } catch (const std::system_error&) {
      // Fewer will do.
    }
    work();
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace

HeicTiles::HeicTiles(const HeifFile& file, ItemID item) : file_(file), item_(item), tiles_{item} {
  if (file.typeOf(item) == fourCC("grid")) {
    readGrid();
  } else {
    tileFormat_ = formatOf(file, item);
    if (isOnItsSide(file, item)) decodeOnItsSide();
    format_ = tileFormat_;
  }
}

/// Of pictures that are to be turned by a quarter libheif 1.15 and others have written the size
/// afterwards instead of the coded one.
void HeicTiles::decodeOnItsSide() {
  try {
    decodeBand(0);
  } catch (const ImageError&) {
    std::swap(tileFormat_.width, tileFormat_.height);
    decodeBand(0);
  }
  nextBand_ = 1;
}

void HeicTiles::readGrid() {
  checkProperties(file_, item_);
  const std::vector<std::uint8_t> data = file_.dataOf(item_);
  HeifBytes grid(data);
  if (grid.u8() != 0) throw ImageError("the HEIC's grid is of an unknown version");
  const std::size_t sizeBytes = (grid.u8() & 1) != 0 ? 4 : 2;
  const std::size_t rows = std::size_t{grid.u8()} + 1;
  columns_ = std::size_t{grid.u8()} + 1;
  format_.width = grid.number(sizeBytes);
  format_.height = grid.number(sizeBytes);
  checkArea(format_.width, format_.height);
  tiles_ = file_.targetsOf(item_, fourCC("dimg"));
  if (tiles_.size() != rows * columns_) throw ImageError("the HEIC's grid misses tiles");
  tileFormat_ = formatOf(file_, tiles_.front());
  for (const ItemID tile : tiles_) {
    const auto& properties = file_.propertiesOf(tile);
    if (formatOf(file_, tile) != tileFormat_ ||
        std::ranges::any_of(properties, isTurningOrCutting, &HeifProperty::type))
      throw ImageError("the HEIC's grid has unequal tiles");
  }
  // The grid covers the picture, and so that every tile shows some of it.
  const auto isCovered = [](std::size_t whole, std::size_t tile, std::size_t count) {
    return tile * count >= whole && tile * (count - 1) < whole;
  };
  if (!isCovered(format_.width, tileFormat_.width, columns_) ||
      !isCovered(format_.height, tileFormat_.height, rows))
    throw ImageError("the HEIC's grid does not fit its picture");
  format_.chroma = tileFormat_.chroma;
  format_.bits = tileFormat_.bits;
}

std::optional<CodedColors> HeicTiles::colorNumbers() const {
  for (const ItemID item : {item_, tiles_.front()})
    for (const HeifProperty& property : file_.propertiesOf(item)) {
      HeifBytes color(property.body);
      if (property.type != fourCC("colr") || color.u32() != fourCC("nclx")) continue;
      CodedColors numbers;
      numbers.primaries = color.u16();
      numbers.transfer = color.u16();
      numbers.signal.matrix = color.u16();
      numbers.signal.isFullRange = (color.u8() & 0x80) != 0;
      return numbers;
    }
  return std::nullopt;
}

std::span<const std::uint8_t> HeicTiles::colorProfile() const {
  for (const ItemID item : {item_, tiles_.front()})
    for (const HeifProperty& property : file_.propertiesOf(item)) {
      if (property.type != fourCC("colr")) continue;
      HeifBytes color(property.body);
      const std::uint32_t kind = color.u32();
      if (kind == fourCC("prof") || kind == fourCC("rICC")) return color.rest();
    }
  return {};
}

void HeicTiles::seek(std::size_t y) {
  const std::size_t band = y / tileFormat_.height;
  while (nextBand_ <= band)
    decodeBand(nextBand_++);
  y_ = y % tileFormat_.height;
  if (y_ % releasedRows == 0)
    for (const auto& tile : band_)
      tile->releaseRowsBefore(y_);
}

void HeicTiles::decodeBand(std::size_t band) {
  band_.clear();
  band_.resize(columns_);
  forEachAtOnce(columns_, [&](std::size_t column) {
    band_[column] = decodeTile(tiles_[band * columns_ + column]);
  });
}

std::unique_ptr<HevcPicture> HeicTiles::decodeTile(ItemID tile) const {
  const std::vector<std::uint8_t> data = file_.dataOf(tile);
  return decodeHevc(configurationOf(file_, tile), data, tileFormat_,
                    columns_ == 1 ? HevcThreads::asManyAsUseful : HevcThreads::one);
}

HeicTiles::Part HeicTiles::part(std::size_t column) const {
  const std::size_t x = column * tileFormat_.width;
  return {*band_[column], y_, x, std::min(tileFormat_.width, format_.width - x)};
}

}  // namespace kestrivane::heic

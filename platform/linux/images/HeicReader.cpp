#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include <algorithm>
#include <array>
#include <limits>

#include "platform/linux/images/HeicCodec.hpp"
#include "platform/linux/images/HeicProfile.hpp"
#include "platform/linux/images/HeicTiles.hpp"
#include "platform/linux/images/HeicTransform.hpp"
#include "platform/linux/images/UprightRows.hpp"
#include "platform/linux/images/YCbCrToRGB.hpp"

namespace kestrivane::heic {
namespace {

/// The item that holds the transparency of `picture`, if there is one.
std::optional<ItemID> findAlpha(const HeifFile& file, ItemID picture) {
  constexpr std::array<std::string_view, 2> names = {"urn:mpeg:hevc:2015:auxid:1",
                                                     "urn:mpeg:mpegB:cicp:systems:auxiliary:alpha"};
  for (const ItemID item : file.sourcesOf(picture, fourCC("auxl"))) {
    const HeifProperty* const kind = file.findProperty(item, fourCC("auxC"));
    if (kind == nullptr) continue;
    HeifBytes bytes(kind->body);
    bytes.take(4);  // version and flags
    const auto rest = bytes.rest();
    const std::string_view text(reinterpret_cast<const char*>(rest.data()), rest.size());
    if (std::ranges::find(names, text.substr(0, text.find('\0'))) != names.end()) return item;
  }
  return std::nullopt;
}

/// The numbers of one row of alpha, whose samples are `Stored`, in the scale of the picture.
template <typename Stored, typename Sample>
void readAlpha(const HeicTiles& alpha, Sample* target) {
  constexpr std::uint32_t full = std::numeric_limits<Sample>::max();
  const std::uint32_t largest = (1U << alpha.format().bits) - 1;
  for (std::size_t i = 0; i < alpha.partCount(); ++i) {
    const HeicTiles::Part part = alpha.part(i);
    const auto* const source = reinterpret_cast<const Stored*>(part.picture.row(0, part.y));
    for (std::size_t x = 0; x < part.pixels; ++x)
      target[part.x + x] = static_cast<Sample>((source[x] * full + largest / 2) / largest);
  }
}

template <typename Sample>
void separateAlpha(Sample* pixel, std::size_t channels, std::size_t pixels) {
  constexpr std::uint64_t full = std::numeric_limits<Sample>::max();
  for (std::size_t x = 0; x < pixels; ++x, pixel += channels) {
    const std::uint64_t alpha = pixel[channels - 1];
    for (std::size_t c = 0; c + 1 < channels && alpha > 0; ++c)
      pixel[c] = static_cast<Sample>(std::min((pixel[c] * full + alpha / 2) / alpha, full));
  }
}

class Reader {
 public:
  Reader(const HeifFile& file, ItemID item) : colors_(file, item) {
    if (const auto found = findAlpha(file, item)) {
      alpha_.emplace(file, *found);
      if (alpha_->format().width != colors_.format().width ||
          alpha_->format().height != colors_.format().height)
        throw ImageError("the HEIC's transparency has another size than the picture");
      const auto targets = file.targetsOf(item, fourCC("prem"));
      isPremultiplied_ = std::ranges::find(targets, *found) != targets.end();
    }
    transform_ = HeicTransform::read(file.propertiesOf(item), colors_.format().width,
                                     colors_.format().height);
    numbers_ = colors_.colorNumbers();
  }

  PixelBuffer decode() {
    UprightRows rows(transform_.shown.width, transform_.shown.height, layout(),
                     transform_.orientation);
    if (layout().depth == Depth::eight)
      decodeRows<std::uint8_t>(rows);
    else
      decodeRows<std::uint16_t>(rows);
    PixelBuffer picture = rows.take();
    const auto profile = colors_.colorProfile();
    picture.iccProfile.assign(profile.begin(), profile.end());
    if (profile.empty() && numbers_ && !picture.layout().isGrey())
      picture.iccProfile = profileOf(*numbers_);
    return picture;
  }

 private:
  PixelLayout layout() const {
    const HevcFormat& format = colors_.format();
    const bool isGrey = format.chroma == Chroma::none;
    return {isGrey ? (alpha_ ? Channels::greyAlpha : Channels::grey)
                   : (alpha_ ? Channels::rgba : Channels::rgb),
            format.bits > 8 ? Depth::sixteen : Depth::eight};
  }

  template <typename Sample>
  void decodeRows(UprightRows& rows) {
    const std::size_t channels = layout().channelCount();
    const std::size_t width = colors_.format().width;
    const PixelRegion& shown = transform_.shown;
    std::vector<Sample> alpha(alpha_ ? width : 0);
    std::vector<Sample> whole(shown.width == width ? 0 : width * channels);
    for (std::size_t y = 0; y < shown.y + shown.height; ++y) {
      colors_.seek(y);
      if (alpha_) alpha_->seek(y);
      if (y < shown.y) continue;
      if (alpha_ && alpha_->format().bits > 8)
        readAlpha<std::uint16_t>(*alpha_, alpha.data());
      else if (alpha_)
        readAlpha<std::uint8_t>(*alpha_, alpha.data());
      auto* const target = reinterpret_cast<Sample*>(rows.next());
      if (whole.empty()) {
        convertRow(alpha.data(), target);
      } else {
        convertRow(alpha.data(), whole.data());
        std::copy_n(whole.data() + shown.x * channels, shown.width * channels, target);
      }
      if (isPremultiplied_) separateAlpha(target, channels, shown.width);
      rows.advance();
    }
  }

  /// One row of the stored picture.
  template <typename Sample>
  void convertRow(const Sample* alpha, Sample* target) const {
    const HevcFormat& format = colors_.format();
    for (std::size_t i = 0; i < colors_.partCount(); ++i) {
      const HeicTiles::Part part = colors_.part(i);
      const auto plane = [&](std::size_t number, std::size_t y) {
        return reinterpret_cast<const Sample*>(part.picture.row(number, y));
      };
      YCbCrRow<Sample> row{.brightness = plane(0, part.y),
                           .isHalvedAcross = format.isHalvedAcross()};
      if (format.chroma != Chroma::none) {
        const std::size_t y = format.isHalvedDown() ? part.y / 2 : part.y;
        row.blue = plane(1, y);
        row.red = plane(2, y);
      }
      if (alpha_) row.alpha = alpha + part.x;
      const YCbCrMatrix matrix =
          YCbCrMatrix::make(numbers_ ? numbers_->signal : part.picture.signal, format);
      Sample* const pixels = target + part.x * layout().channelCount();
      if constexpr (sizeof(Sample) == 1)
        fastestYCbCrLoops().convert8(matrix, row, part.pixels, pixels);
      else
        fastestYCbCrLoops().convert16(matrix, row, part.pixels, pixels);
    }
  }

  HeicTiles colors_;
  std::optional<HeicTiles> alpha_;
  bool isPremultiplied_ = false;
  HeicTransform transform_;
  std::optional<CodedColors> numbers_;
};

}  // namespace

bool recognise(std::span<const std::uint8_t> start) {
  constexpr std::array<std::string_view, 8> brands = {"heic", "heix", "heim", "heis",
                                                      "hevc", "hevx", "mif1", "msf1"};
  if (start.size() < 12) return false;
  const std::string_view text(reinterpret_cast<const char*>(start.data()), start.size());
  return text.substr(4, 4) == "ftyp" &&
         std::ranges::find(brands, text.substr(8, 4)) != brands.end();
}

PixelBuffer decode(const ImageInput& input) {
  const std::vector<std::uint8_t> bytes = input.readAll();
  const HeifFile file(bytes);
  return Reader(file, file.primary()).decode();
}

}  // namespace kestrivane::heic

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include <algorithm>
#include <array>
#include <limits>

#include "platform/linux/images/HeicCodec.hpp"
#include "platform/linux/images/HeifHandles.hpp"
#include "platform/linux/images/MadeProfile.hpp"

namespace kestrivane::heic {
namespace {

ImageHandle openPrimary(heif_context* context, std::span<const std::uint8_t> bytes) {
  heif_context_set_maximum_image_size_limit(context, static_cast<int>(maximumSide));
  check(heif_context_read_from_memory_without_copy(context, bytes.data(), bytes.size(), nullptr));
  heif_image_handle* handle = nullptr;
  check(heif_context_get_primary_image_handle(context, &handle));
  return ImageHandle(handle);
}

/// Upright; planes of red, green and blue, or of brightness alone, and of alpha.
HeifImage decodePlanes(const heif_image_handle* handle) {
  const DecodingOptions options(heif_decoding_options_alloc());
  if (!options) throw std::bad_alloc();
  options->strict_decoding = 1;
  heif_image* image = nullptr;
  check(heif_decode_image(handle, &image, heif_colorspace_undefined, heif_chroma_undefined,
                          options.get()));
  HeifImage owner(image);
  heif_error warning{};
  if (heif_image_get_decoding_warnings(image, 0, &warning, 1) > 0)
    throw ImageError("the HEIC's data is damaged");
  return owner;
}

/// One plane of the picture; `Number` is wide for more than eight bits.
template <typename Number>
class Plane {
 public:
  Plane(const heif_image* image, heif_channel channel, const PixelBuffer& picture)
      : bytes_(heif_image_get_plane_readonly(image, channel, &stride_)),
        bits_(heif_image_get_bits_per_pixel_range(image, channel)) {
    const bool isWide = sizeof(Number) > 1;
    if (bytes_ == nullptr || bits_ < 8 || bits_ > 16 || (bits_ > 8) != isWide ||
        heif_image_get_width(image, channel) != static_cast<int>(picture.width()) ||
        heif_image_get_height(image, channel) != static_cast<int>(picture.height()))
      throw ImageError("the HEIC's planes are of an unexpected kind");
  }

  /// Sets `channel` of every pixel.
  void copyTo(PixelBuffer& picture, std::size_t channel) const {
    const std::uint32_t largest = (1U << bits_) - 1;
    constexpr std::uint32_t full = std::numeric_limits<Number>::max();
    const std::size_t channels = picture.layout().channelCount();
    for (std::size_t y = 0; y < picture.height(); ++y) {
      const auto* const source =
          reinterpret_cast<const Number*>(bytes_ + y * static_cast<std::size_t>(stride_));
      auto* const target = reinterpret_cast<Number*>(picture.row(y)) + channel;
      for (std::size_t x = 0; x < picture.width(); ++x) {
        const std::uint32_t value = std::min<std::uint32_t>(source[x], largest);
        target[x * channels] = static_cast<Number>((value * full + largest / 2) / largest);
      }
    }
  }

 private:
  int stride_ = 0;
  const std::uint8_t* bytes_;
  int bits_;
};

template <typename Number>
void separateAlpha(PixelBuffer& picture) {
  constexpr std::uint64_t full = std::numeric_limits<Number>::max();
  const std::size_t channels = picture.layout().channelCount();
  for (std::size_t line = 0; line < picture.height(); ++line) {
    auto* pixel = reinterpret_cast<Number*>(picture.row(line));
    for (std::size_t x = 0; x < picture.width(); ++x, pixel += channels) {
      const std::uint64_t alpha = pixel[channels - 1];
      for (std::size_t c = 0; c + 1 < channels && alpha > 0; ++c)
        pixel[c] = static_cast<Number>(std::min((pixel[c] * full + alpha / 2) / alpha, full));
    }
  }
}

template <typename Number>
void copyPlanes(const heif_image* image, PixelBuffer& picture) {
  constexpr std::array colors = {heif_channel_R, heif_channel_G, heif_channel_B};
  const PixelLayout layout = picture.layout();
  if (layout.isGrey())
    Plane<Number>(image, heif_channel_Y, picture).copyTo(picture, 0);
  else
    for (std::size_t c = 0; c < colors.size(); ++c)
      Plane<Number>(image, colors[c], picture).copyTo(picture, c);
  if (layout.hasAlpha())
    Plane<Number>(image, heif_channel_Alpha, picture).copyTo(picture, layout.channelCount() - 1);
}

PixelLayout layoutOf(const heif_image* image) {
  const bool isGrey = heif_image_get_colorspace(image) == heif_colorspace_monochrome;
  const bool hasAlpha = heif_image_has_channel(image, heif_channel_Alpha) != 0;
  const int bits =
      heif_image_get_bits_per_pixel_range(image, isGrey ? heif_channel_Y : heif_channel_R);
  return {isGrey ? (hasAlpha ? Channels::greyAlpha : Channels::grey)
                 : (hasAlpha ? Channels::rgba : Channels::rgb),
          bits > 8 ? Depth::sixteen : Depth::eight};
}

PixelBuffer makePicture(const heif_image* image, const heif_image_handle* handle) {
  PixelBuffer picture = PixelBuffer::create(
      static_cast<std::size_t>(std::max(heif_image_get_primary_width(image), 0)),
      static_cast<std::size_t>(std::max(heif_image_get_primary_height(image), 0)), layoutOf(image));
  const bool isPremultiplied =
      picture.layout().hasAlpha() && heif_image_handle_is_premultiplied_alpha(handle) != 0;
  if (picture.layout().depth == Depth::eight) {
    copyPlanes<std::uint8_t>(image, picture);
    if (isPremultiplied) separateAlpha<std::uint8_t>(picture);
  } else {
    copyPlanes<std::uint16_t>(image, picture);
    if (isPremultiplied) separateAlpha<std::uint16_t>(picture);
  }
  return picture;
}

/// From the profile in the file, else from the numbers for primaries and transfer (ITU-T H.273).
/// Pictures for brighter screens (PQ, HLG) are taken for ordinary ones.
std::vector<std::uint8_t> readProfile(const heif_image_handle* handle, PixelLayout layout) {
  std::vector<std::uint8_t> profile(heif_image_handle_get_raw_color_profile_size(handle));
  if (!profile.empty()) {
    check(heif_image_handle_get_raw_color_profile(handle, profile.data()));
    return profile;
  }
  heif_color_profile_nclx* read = nullptr;
  if (heif_image_handle_get_nclx_color_profile(handle, &read).code != heif_error_Ok) return {};
  const ColorNumbers numbers(read);
  if (layout.isGrey()) return {};
  const TransferCurve curve{
      numbers->transfer_characteristics == heif_transfer_characteristic_linear ? 1.0 : 0.0};
  const bool usualColors = numbers->color_primaries == heif_color_primaries_unspecified ||
                           numbers->color_primaries == heif_color_primaries_ITU_R_BT_709_5;
  if (usualColors && curve.gamma == 0) return {};
  const auto point = [](float x, float y) { return Chromaticity{x, y}; };
  return makeProfile(
      usualColors
          ? sRGBChromaticities
          : Chromaticities{point(numbers->color_primary_white_x, numbers->color_primary_white_y),
                           point(numbers->color_primary_red_x, numbers->color_primary_red_y),
                           point(numbers->color_primary_green_x, numbers->color_primary_green_y),
                           point(numbers->color_primary_blue_x, numbers->color_primary_blue_y)},
      curve);
}

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
  const Context context(heif_context_alloc());
  if (!context) throw std::bad_alloc();
  const ImageHandle handle = openPrimary(context.get(), bytes);
  const int width = heif_image_handle_get_width(handle.get());
  const int height = heif_image_handle_get_height(handle.get());
  checkArea(static_cast<std::uint64_t>(std::max(width, 0)),
            static_cast<std::uint64_t>(std::max(height, 0)));
  const HeifImage image = decodePlanes(handle.get());
  PixelBuffer picture = makePicture(image.get(), handle.get());
  picture.iccProfile = readProfile(handle.get(), picture.layout());
  return picture;
}

}  // namespace kestrivane::heic

#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/Palette.hpp"

#include <libimagequant.h>

#include "platform/linux/images/ImageError.hpp"
#include "platform/linux/images/LibraryHandle.hpp"

namespace kestrivane {
namespace {

/// The colours of the opaque pixels; nothing when there are more than `limit`.
std::optional<std::vector<PaletteColour>> fewColours(const PixelRows& picture, std::size_t limit) {
  const std::size_t channels = picture.layout().channelCount();
  std::vector<std::uint8_t> scratch(picture.scratchBytes());
  PaletteColours colours(limit);
  for (std::size_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* pixel = picture.row(y, scratch.data());
    for (std::size_t x = 0; x < picture.width(); ++x, pixel += channels) {
      const bool opaque = channels == 3 || pixel[3] >= Palette::opaqueAlpha;
      if (opaque && !colours.insert({pixel[0], pixel[1], pixel[2]})) return std::nullopt;
    }
  }
  return colours.all();
}

/// Every `step`th pixel of every `step`th row, either opaque or transparent.
struct Sample {
  std::vector<liq_color> pixels;
  std::size_t width;
  std::size_t height;
};

Sample sampleOf(const PixelRows& picture) {
  // More pixels make the choice slower and the palette no better.
  constexpr std::size_t enough = std::size_t{1} << 18;
  std::size_t step = 1;
  while (picture.width() * picture.height() > enough * step * step)
    ++step;
  const std::size_t channels = picture.layout().channelCount();
  std::vector<std::uint8_t> scratch(picture.scratchBytes());
  Sample sample{{}, (picture.width() + step - 1) / step, (picture.height() + step - 1) / step};
  sample.pixels.reserve(sample.width * sample.height);
  for (std::size_t y = 0; y < picture.height(); y += step) {
    const std::uint8_t* row = picture.row(y, scratch.data());
    for (std::size_t x = 0; x < picture.width(); x += step) {
      const std::uint8_t* pixel = row + x * channels;
      const bool opaque = channels == 3 || pixel[3] >= Palette::opaqueAlpha;
      sample.pixels.push_back(opaque ? liq_color{pixel[0], pixel[1], pixel[2], 255}
                                     : liq_color{0, 0, 0, 0});
    }
  }
  return sample;
}

using Attributes = LibraryHandle<liq_attr, liq_attr_destroy>;
using SampleImage = LibraryHandle<liq_image, liq_image_destroy>;
using Result = LibraryHandle<liq_result, liq_result_destroy>;

std::vector<PaletteColour> chosenColours(const PixelRows& picture, std::size_t limit) {
  const Sample sample = sampleOf(picture);
  const Attributes attributes(liq_attr_create());
  if (!attributes) throw ImageError("no palette can be made");
  liq_set_max_colors(attributes.get(), static_cast<int>(limit));
  constexpr double gammaOfSRGB = 0;
  const SampleImage image(liq_image_create_rgba(attributes.get(), sample.pixels.data(),
                                                static_cast<int>(sample.width),
                                                static_cast<int>(sample.height), gammaOfSRGB));
  if (!image) throw ImageError("no palette can be made");
  liq_result* made = nullptr;
  if (liq_image_quantize(image.get(), attributes.get(), &made) != LIQ_OK)
    throw ImageError("no palette can be made");
  const Result result(made);

  std::vector<PaletteColour> colours;
  const liq_palette* palette = liq_get_palette(result.get());
  for (std::size_t i = 0; i < palette->count && colours.size() < limit; ++i) {
    const liq_color entry = palette->entries[i];
    if (entry.a >= Palette::opaqueAlpha) colours.push_back({entry.r, entry.g, entry.b});
  }
  return colours;
}

}  // namespace

Palette Palette::of(const PixelRows& picture) {
  const bool hasAlpha = picture.layout().hasAlpha();
  const std::size_t limit =
      hasAlpha ? PaletteColours::maximumSize - 1 : PaletteColours::maximumSize;
  Palette palette;
  if (auto few = fewColours(picture, limit)) {
    palette.colours = std::move(*few);
    palette.isExact = true;
  } else {
    palette.colours = chosenColours(picture, limit);
  }
  if (hasAlpha) {
    palette.transparentIndex = static_cast<std::uint8_t>(palette.colours.size());
    palette.colours.push_back({0, 0, 0});
  }
  return palette;
}

}  // namespace kestrivane

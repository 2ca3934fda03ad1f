#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PaletteMapper.hpp"

#include <algorithm>

namespace kestrivane {
namespace {

// The cubes have sides of four values: a smaller side costs more searches than it gains.
constexpr int cubeShift = 2;
constexpr int cubesPerSide = 256 >> cubeShift;
constexpr std::int16_t unknown = -1;

constexpr std::int32_t farAway = 10'000;  // from every colour

constexpr int errorShift = 6;

}  // namespace

PaletteMapper::PaletteMapper(const Palette& palette, std::size_t width)
    : palette_(palette),
      colours_(PaletteColours::maximumSize),
      channels_(palette.transparentIndex ? 4 : 3),
      errors_(width + 2),
      nextErrors_(width + 2) {
  for (auto& plane : planes_)
    plane.fill(farAway);
  const std::size_t count = palette.colours.size() - (palette.transparentIndex ? 1 : 0);
  for (std::size_t i = 0; i < count; ++i) {
    const PaletteColour colour = palette.colours[i];
    colours_.insert(colour);
    planes_[0][i] = colour.red;
    planes_[1][i] = colour.green;
    planes_[2][i] = colour.blue;
  }
  if (!palette.isExact) cubes_.assign(cubesPerSide * cubesPerSide * cubesPerSide, unknown);
}

void PaletteMapper::mapRow(const std::uint8_t* pixels, std::span<std::uint8_t> indices) {
  if (palette_.isExact)
    mapExactly(pixels, indices);
  else
    mapSpreadingErrors(pixels, indices);
}

bool PaletteMapper::isTransparent(const std::uint8_t* pixel) const {
  return channels_ == 4 && pixel[3] < Palette::opaqueAlpha;
}

void PaletteMapper::mapExactly(const std::uint8_t* pixels, std::span<std::uint8_t> indices) {
  for (std::uint8_t& index : indices) {
    index = isTransparent(pixels) ? *palette_.transparentIndex
                                  : colours_.insert({pixels[0], pixels[1], pixels[2]}).value();
    pixels += channels_;
  }
}

void PaletteMapper::mapSpreadingErrors(const std::uint8_t* pixels,
                                       std::span<std::uint8_t> indices) {
  std::ranges::fill(nextErrors_, Error{});
  const std::size_t width = indices.size();
  // Every other row runs the other way, so that the grain has no direction.
  const std::ptrdiff_t ahead = leftwards_ ? -1 : 1;
  std::size_t x = leftwards_ ? width - 1 : 0;
  Error carried{};  // from the pixel before
  for (std::size_t i = 0; i < width; ++i, x += static_cast<std::size_t>(ahead)) {
    const std::uint8_t* pixel = pixels + x * channels_;
    if (isTransparent(pixel)) {
      indices[x] = *palette_.transparentIndex;
      carried = {};
      continue;
    }
    std::array<int, 3> wanted;
    for (std::size_t c = 0; c < 3; ++c) {
      const int error = (errors_[x + 1][c] + carried[c] + (1 << (errorShift - 1))) >> errorShift;
      wanted[c] = std::clamp(pixel[c] + error, 0, 255);
    }
    const std::uint8_t index = nearest(wanted[0], wanted[1], wanted[2]);
    indices[x] = index;

    Error* below = nextErrors_.data() + x + 1;
    for (std::size_t c = 0; c < 3; ++c) {
      // The shares of Floyd and Steinberg are 7, 3, 5 and 1 sixteenths; three quarters of them.
      const std::int32_t off = wanted[c] - planes_[c][index];
      carried[c] = off * 21;
      below[-ahead][c] += off * 9;
      below[0][c] += off * 15;
      below[ahead][c] += off * 3;
    }
  }
  errors_.swap(nextErrors_);
  leftwards_ = !leftwards_;
}

std::uint8_t PaletteMapper::nearest(int red, int green, int blue) {
  const int cube = ((red >> cubeShift) * cubesPerSide + (green >> cubeShift)) * cubesPerSide +
                   (blue >> cubeShift);
  std::int16_t& known = cubes_[static_cast<std::size_t>(cube)];
  if (known == unknown) {
    constexpr int centre = 1 << (cubeShift - 1);
    const auto middle = [](int value) { return (value >> cubeShift << cubeShift) + centre; };
    known = search(middle(red), middle(green), middle(blue));
  }
  return static_cast<std::uint8_t>(known);
}

std::uint8_t PaletteMapper::search(int red, int green, int blue) const {
  std::array<std::int32_t, PaletteColours::maximumSize> distances;
  for (std::size_t i = 0; i < distances.size(); ++i) {
    const std::int32_t r = planes_[0][i] - red;
    const std::int32_t g = planes_[1][i] - green;
    const std::int32_t b = planes_[2][i] - blue;
    distances[i] = r * r + g * g + b * b;
  }
  return static_cast<std::uint8_t>(std::ranges::min_element(distances) - distances.begin());
}

}  // namespace kestrivane

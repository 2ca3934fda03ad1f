#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/LinuxBitmapContext.hpp"

#include <algorithm>
#include <array>
#include <exception>

#include "platform/linux/images/LinuxImage.hpp"
#include "platform/linux/images/Resampling.hpp"

namespace kestrivane {
namespace {

constexpr std::size_t channels = 4;
constexpr PixelLayout deepRGBA{Channels::rgba, Depth::sixteen};

/// One row of `picture` as floats from 0 to 1, the colours multiplied by alpha.
void premultiply(const std::uint16_t* row, std::size_t pixels, float* target) {
  constexpr float full = 65'535;
  for (std::size_t i = 0; i < pixels; ++i, row += channels, target += channels) {
    const float alpha = static_cast<float>(row[3]) / full;
    for (std::size_t c = 0; c < 3; ++c)
      target[c] = static_cast<float>(row[c]) / full * alpha;
    target[3] = alpha;
  }
}

void addWeighted(const float* source, float weight, float* target, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    target[i] += weight * source[i];
}

void scaleRow(const std::vector<float>& source, const std::vector<ResampledPixel>& columns,
              std::vector<float>& target) {
  for (std::size_t x = 0; x < columns.size(); ++x) {
    std::array<float, channels> sum{};
    const float* from = source.data() + columns[x].first * channels;
    for (const float weight : columns[x].weights) {
      for (std::size_t c = 0; c < channels; ++c)
        sum[c] += weight * from[c];
      from += channels;
    }
    std::ranges::copy(sum, target.begin() + static_cast<std::ptrdiff_t>(x * channels));
  }
}

std::uint8_t toByte(float value) {
  return static_cast<std::uint8_t>(std::clamp(value, 0.0F, 1.0F) * 255 + 0.5F);
}

}  // namespace

LinuxBitmapContext::LinuxBitmapContext(std::size_t width, std::size_t height)
    : width_(width), height_(height) {
  checkArea(width, height);
  pixels_.resize(width * height * channels);
}

void LinuxBitmapContext::draw(const Image& image, const Rect& rect) try {
  const ResamplingKernel kernel =
      quality_ == InterpolationQuality::high ? ResamplingKernel::lanczos : ResamplingKernel::linear;
  const auto columns = resample(image.width(), rect.x, rect.width, width_, kernel);
  const auto lines = resample(image.height(), rect.y, rect.height, height_, kernel);
  const PixelRows rows =
      dynamic_cast<const LinuxImage&>(image).rows(deepRGBA, ProfileSupport::none);
  std::vector<std::uint8_t> scratch(rows.scratchBytes());
  std::vector<float> source(rows.width() * channels);
  std::vector<float> scaled(width_ * channels);
  std::vector<float> drawn(pixels_.size());
  for (std::size_t y = 0; y < rows.height(); ++y) {
    premultiply(reinterpret_cast<const std::uint16_t*>(rows.row(y, scratch.data())), rows.width(),
                source.data());
    scaleRow(source, columns, scaled);
    for (std::size_t line = 0; line < height_; ++line) {
      const ResampledPixel& from = lines[line];
      if (y >= from.first && y - from.first < from.weights.size())
        addWeighted(scaled.data(), from.weights[y - from.first], &drawn[line * width_ * channels],
                    scaled.size());
    }
  }
  compose(drawn);
} catch (const std::exception&) {
  failed_ = true;
}

void LinuxBitmapContext::compose(const std::vector<float>& drawn) {
  for (std::size_t i = 0; i < pixels_.size(); i += channels) {
    // The negative lobes of the kernel can carry values a little beyond their range.
    const float alpha = std::clamp(drawn[i + 3], 0.0F, 1.0F);
    for (std::size_t c = 0; c < 3; ++c)
      pixels_[i + c] = std::clamp(drawn[i + c], 0.0F, alpha) + pixels_[i + c] * (1 - alpha);
    pixels_[i + 3] = alpha + pixels_[i + 3] * (1 - alpha);
  }
}

std::shared_ptr<const Image> LinuxBitmapContext::makeImage() try {
  if (failed_) return nullptr;
  PixelBuffer picture = PixelBuffer::create(width_, height_, {Channels::rgba, Depth::eight});
  std::uint8_t* target = picture.row(0);
  for (std::size_t i = 0; i < pixels_.size(); i += channels) {
    const float alpha = pixels_[i + 3];
    for (std::size_t c = 0; c < 3; ++c)
      target[i + c] = toByte(alpha > 0 ? pixels_[i + c] / alpha : 0);
    target[i + 3] = toByte(alpha);
  }
  return std::make_shared<LinuxImage>(std::move(picture));
} catch (const std::exception&) {
  return nullptr;
}

}  // namespace kestrivane

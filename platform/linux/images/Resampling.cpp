#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/Resampling.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kestrivane {
namespace {

constexpr double lobes = 3;

double sinc(double x) {
  const double angle = std::numbers::pi * x;
  return x == 0 ? 1 : std::sin(angle) / angle;
}

double radius(ResamplingKernel kernel) {
  return kernel == ResamplingKernel::lanczos ? lobes : 1;
}

double weight(ResamplingKernel kernel, double distance) {
  if (std::abs(distance) >= radius(kernel)) return 0;
  return kernel == ResamplingKernel::lanczos ? sinc(distance) * sinc(distance / lobes)
                                             : 1 - std::abs(distance);
}

}  // namespace

std::vector<ResampledPixel> resample(std::size_t sourceSize, double start, double length,
                                     std::size_t targetSize, ResamplingKernel kernel) {
  std::vector<ResampledPixel> pixels(targetSize);
  const double step = static_cast<double>(sourceSize) / length;  // source pixels per target pixel
  const double scale = std::max(step, 1.0);
  const auto last = static_cast<double>(sourceSize - 1);
  for (std::size_t i = 0; i < targetSize; ++i) {
    const double target = static_cast<double>(i) + 0.5 - start;
    if (target < 0 || target >= length) continue;
    const double center = target * step - 0.5;
    const double reach = radius(kernel) * scale;
    const auto first = static_cast<std::size_t>(std::clamp(std::ceil(center - reach), 0.0, last));
    const auto end = static_cast<std::size_t>(std::clamp(std::floor(center + reach), 0.0, last));
    ResampledPixel& pixel = pixels[i];
    pixel.first = first;
    double sum = 0;
    for (std::size_t source = first; source <= end; ++source) {
      const double value = weight(kernel, (static_cast<double>(source) - center) / scale);
      pixel.weights.push_back(static_cast<float>(value));
      sum += value;
    }
    for (float& value : pixel.weights)
      value = static_cast<float>(value / sum);
  }
  return pixels;
}

}  // namespace kestrivane

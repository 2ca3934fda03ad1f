// The weights with which the pixels of one axis of a picture make those of another size.
//
// Thread-safety: immutable values. Ownership: own their weights.
#pragma once

#include <cstddef>
#include <vector>

namespace kestrivane {

enum class ResamplingKernel {
  linear,   ///< triangle
  lanczos,  ///< sinc, windowed to three lobes
};

/// One pixel of the target axis: the sum of `weights[i]` times source pixel `first + i`. The
/// weights add up to 1; there are none where the target lies outside of the picture.
struct ResampledPixel {
  std::size_t first = 0;
  std::vector<float> weights;
};

/// The weights for the pixels 0 to `targetSize` of an axis on which a picture of `sourceSize`
/// pixels covers the stretch from `start` on, `length` long. When the picture is made smaller the
/// kernel grows, so that every source pixel counts.
std::vector<ResampledPixel> resample(std::size_t sourceSize, double start, double length,
                                     std::size_t targetSize, ResamplingKernel kernel);

}  // namespace kestrivane
